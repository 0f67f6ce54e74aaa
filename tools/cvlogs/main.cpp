#include <ctime>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/Moment.h"
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

Option MomentOption(const char* name, std::optional<std::int64_t>& moment, const char* help) {
    const auto parse = [&moment, name](const std::string& text) {
        moment = ParseMoment(text, std::time(nullptr));
        if (!moment) throw UsageError(std::string(name) + ": \"" + text + "\" is no time");
    };
    return {name, "TIME", help, parse};
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

/// The configuration of the site that this program is installed in; empty when there is none.
std::string OwnConfiguration() {
    std::error_code unknown;
    const std::string directory = OwnSite() + "/config";
    return std::filesystem::exists(directory + "/cvlogs.ini", unknown) ? directory : std::string();
}

Options LogOptions(LogChoice& log) {
    log.configDirectory = OwnConfiguration();
    return {AtMostOneOf("log", {"--file", "FILE", "The log file; its archives are read with it", &log.file}),
            AtMostOneOf("log", {"--db", "FILE", "The log database", &log.database}),
            AtMostOneOf("log",
                        ConfigOption(log.configDirectory,
                                     "Directory of the cvlogs.ini that says where the module logs (default: "
                                     "the one of the site that this program is installed in)"))};
}

Options PrintOptions(PrintChoice& print) {
    const auto chooseColour = [&print](const std::string& text) {
        if (text != "auto" && text != "always" && text != "never") {
            throw UsageError("--color: \"" + text + "\" is none of auto, always, never");
        }
        print.colour = text;
    };
    return {
        AtMostOneOf("format", {"--json", "", "Print one JSON object a line", &print.asJson}),
        AtMostOneOf("format", {"--tsv", "", "Print fields between tabs, below a line of the columns' names",
                               &print.asTsv}),
        {"--color", "WHEN", "Colour by level: auto (on a terminal), always or never", chooseColour},
        {"--no-pager", "", "Print to the terminal itself", &print.noPager}};
}

Options FilterOptions(QueryChoice& choice, const char* levelHelp) {
    return LogOptions(choice.log) +
           Options{
               {"--module", "NAME", "The module, letter for letter", &choice.log.module},
               {"--sub", "NAME", "Only this sub-module; may be given more than once", &choice.subModules,
                false, true},
               LevelOption(choice.level, levelHelp),
               {"--grep", "REGEX",
                "Only messages in which this is found, as Perl's regular expressions; for a database one with "
                "\"%\" is SQL's LIKE",
                &choice.grep},
               {"--time", "PATTERN", "Only local times like this, such as \"02/01/2024 09:%\"",
                &choice.timePattern},
               MomentOption(
                   "--since", choice.since,
                   "Not before this local time: 2024-02-01, \"2024-02-01 09:05:03\", 09:05, yesterday, "
                   "@SECONDS, or \"10 min ago\", 2h, 7d"),
               MomentOption("--until", choice.until, "Not after this time"),
           } +
           PrintOptions(choice.print);
}

Option LastOption(QueryChoice& choice, const char* help) {
    return NumberOption("-n,--lines", choice.last, help);
}

Options QueryOptions(QueryChoice& choice) {
    return FilterOptions(choice, "Only entries of this level and above") +
           Options{
               AtMostOneOf("order", LastOption(choice, "Only the last N entries")),
               AtMostOneOf("order", {"--newest", "", "Newest entries first", &choice.newest}),
               AtMostOneOf("order", {"--by-module", "", "By the names of the modules", &choice.byModule}),
               AtMostOneOf("order", {"--by-level", "", "By level, the least first", &choice.byLevel}),
               NumberOption("--limit", choice.limit, "At most this many entries; 0 is no limit"),
               NumberOption("--offset", choice.offset, "Leave out this many entries first"),
               {"-f,--follow", "", "Then wait for entries to come, until a signal ends it", &choice.follow},
           };
}

Options FollowOptions(QueryChoice& choice) {
    return FilterOptions(choice, "Only entries of this level and above") +
           Options{LastOption(choice, "Begin with the last N entries (default: 10)")};
}

Options DeliveriesOptions(DeliveriesChoice& choice) {
    DeliveryChoice& wanted = choice.wanted;
    EntryChoice& entries = wanted.entries;
    return LogOptions(entries.log) +
           Options{
               {"--failed", "", "Only what was not answered, or with an HTTP status of 400 and above",
                &wanted.failed},
               {"--outcome", "WORD",
                "Only with this outcome: answered, not-connected, unknown, refused or sending; \"*\" and "
                "\"?\" stand for any text and character here and below",
                &wanted.outcome},
               {"--to", "NAME", "Only to this recipient, carrier or object", &wanted.to},
               {"--server", "TEXT", "Only through servers whose address holds this", &wanted.server},
               {"--client", "ADDRESS", "Only from this client", &wanted.client},
               {"--method", "NAME", "Only this method", &wanted.method},
               {"--id", "ID", "Only the request of this id", &wanted.id},
               MomentOption("--since", entries.since, "Not before this time; see \"cvlogs query --help\""),
               MomentOption("--until", entries.until, "Not after this time"),
               {"--summary", "", "Count by server, outcome and method, with times in milliseconds",
                &choice.summary},
               {"--html", "FILE", "Write a report for a browser into FILE, which is replaced as a whole",
                &choice.html},
           } +
           PrintOptions(choice.print);
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
    QueryChoice query;
    QueryChoice count;
    QueryChoice follow;
    follow.last = 10;
    follow.follow = true;
    DeliveriesChoice deliveries;
    deliveries.wanted.entries.log.module = "Deliveries";
    DatabaseChoice database;
    WriteChoice entry;
    std::string text;  // of a command's only other value
    bool yes = false;
    const CommandLine line = {
        .name = "cvlogs",
        .help = "Looks after the system's logs: reads them, and checks and tries the configuration.",
        .options = {},
        .commands =
            {
                {"query", "Print entries of a log, in the order they were written in", QueryOptions(query),
                 [&] { QueryEntries(query); }},
                {"follow", "Print the last entries of a log, and each that is written from now on",
                 FollowOptions(follow), [&] { QueryEntries(follow); }},
                {"count", "Count the entries of a log that are alike and of one second",
                 FilterOptions(count, "Only entries of this very level"), [&] { CountEntries(count); }},
                {"deliveries", "Show what became of the requests, from the delivery journal",
                 DeliveriesOptions(deliveries), [&] { ShowDeliveries(deliveries); }},
                {"modules", "Print the modules that a log database holds", DatabaseOptions(database),
                 [&] { PrintModules(database); }},
                {"truncate", "Remove every entry of every module from a log database",
                 DatabaseOptions(database) + Options{YesOption(yes)}, [&] { TruncateDatabase(database); }},
                {"drop", "Remove a module with its entries from a log database",
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
