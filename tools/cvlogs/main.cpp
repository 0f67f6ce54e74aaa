#include <ctime>
#include <limits>
#include <vector>

#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/MomentText.h"
#include "tools/operator/CommandLine.h"

using namespace quorbel;

namespace {

using Options = std::vector<Option>;

Options operator+(Options options, const Options& more) {
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

Option LevelOption(LogLevel& level, const std::string& help) {
    const auto parse = [&level](const std::string& text) {
        level = ParseLogLevel(text, UnknownLevel::None);
        if (level == LogLevel::None) throw UsageError("--level: \"" + text + "\" names no level");
    };
    return {"--level", "LEVEL", help + ": trace, debug, info, warn, error, critical or fatal", parse};
}

Option SinceOption(LogFilter& filter) {
    const auto parse = [&filter](const std::string& text) {
        filter.since = ParseMoment(text, std::time(nullptr));
        if (!filter.since) throw UsageError("--since: \"" + text + "\" is no time");
    };
    return {"--since", "TIME",
            "Not before this local time: 2024-02-01, \"2024-02-01 09:05:03\", @SECONDS, or 15m, 2h, 7d ago",
            parse};
}

Option NumberOption(const char* name, std::int64_t& number, const char* help) {
    return {name, "N", help, NumberTarget{&number, 0, std::numeric_limits<std::uint32_t>::max()}};
}

Option ConfigOption(std::string& directory, const char* help = "Directory of cvlogs.ini") {
    return {"--config-dir", "DIR", help, &directory};
}

Option YesOption(bool& yes) {
    return Required({"--yes", "", "Do it: nothing brings the entries back", &yes});
}

Options DatabaseOptions(DatabaseChoice& choice) {
    return {AtMostOneOf("log", {"--db", "FILE", "The database file", &choice.file}),
            AtMostOneOf("log", ConfigOption(choice.configDirectory,
                                            "Directory of the cvlogs.ini that names the database"))};
}

Options EntryOptions(EntryChoice& choice, const char* levelHelp) {
    LogFilter& filter = choice.filter;
    return DatabaseOptions(choice.database) +
           Options{
               Required({"--module", "NAME", "The module, letter for letter", &choice.module}),
               LevelOption(choice.level, levelHelp),
               {"--grep", "PATTERN", "Only messages like this; \"%\" is any text, \"_\" any character",
                &filter.messagePattern},
               {"--time", "PATTERN", "Only local times like this, such as \"02/01/2024 09:%\"",
                &filter.timePattern},
               AtMostOneOf("format", {"--json", "", "Print one JSON object a line", &choice.asJson}),
               AtMostOneOf("format",
                           {"--tsv", "", "Print fields between tabs, below a line of the columns' names",
                            &choice.asTsv}),
           };
}

Options QueryOptions(EntryChoice& choice) {
    LogFilter& filter = choice.filter;
    return EntryOptions(choice, "Only entries of this level and above") +
           Options{
               {"--sub", "NAME", "Only this sub-module; may be given more than once", &filter.modules, false,
                true},
               SinceOption(filter),
               AtMostOneOf("order", {"--newest", "", "Newest entries first", &filter.newestFirst}),
               AtMostOneOf("order", {"--by-module", "", "By the names of the sub-modules", &filter.byModule}),
               AtMostOneOf("order", {"--by-level", "", "By level, the least first", &filter.byLevel}),
               NumberOption("--limit", filter.pageSize, "At most this many entries; 0 is no limit"),
               NumberOption("--offset", filter.offset, "Leave out this many entries first"),
           };
}

Options WriteOptions(WriteChoice& choice) {
    return {Required(ConfigOption(choice.configDirectory)),
            Required({"--module", "NAME", "Module to write for", &choice.module}),
            Required(LevelOption(choice.level, "Level of the entry")),
            {"--worker", "", "Write from a worker thread, as services do", &choice.byWorker},
            {"TEXT", "", "The message, at most 2047 bytes of it", &choice.text, true, true}};
}

}  // namespace

int main(int argc, char** argv) {
    EntryChoice entries;
    DatabaseChoice database;
    WriteChoice entry;
    std::string text;  // of a command's only other value
    bool yes = false;
    const CommandLine line = {
        .name = "cvlogs",
        .help =
            "Looks after the system's logs: queries log databases, and checks and tries the configuration.",
        .options = {},
        .commands =
            {
                {"query", "Print a module's entries, in the order they were written in",
                 QueryOptions(entries), [&] { QueryEntries(entries); }},
                {"count", "Count a module's entries that are alike and of one second",
                 EntryOptions(entries, "Only entries of this very level"), [&] { CountEntries(entries); }},
                {"modules", "Print the modules that a log database holds", DatabaseOptions(database),
                 [&] { PrintModules(database); }},
                {"truncate", "Remove every entry of every module",
                 DatabaseOptions(database) + Options{YesOption(yes)}, [&] { TruncateDatabase(database); }},
                {"drop", "Remove a module with its entries",
                 DatabaseOptions(database) +
                     Options{Required({"MODULE", "", "The module's name, letter for letter", &text}),
                             YesOption(yes)},
                 [&] { DropModule(database, text); }},
                {"check",
                 "Show how each module logs, and what is likely a mistake",
                 {Required(ConfigOption(text))},
                 [&] { CheckConfiguration(text); },
                 "Changes nothing. Run it as the user of the program in question: the answers depend on rights.\n"
                 "Exit status 1 when the log of a module would not be ready."},
                {"write", "Write one entry the way the system's programs do", WriteOptions(entry),
                 [&] { WriteEntry(entry); },
                 "Run it as the user of the program in question: files that it makes may shut out other users.\n"
                 "A module without a section in cvlogs.ini gets one, as when its program starts."},
            },
        .run = {},
    };
    return RunTool(line, argc, argv);
}
