#include <CLI/CLI.hpp>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "cvdblib/sqlite3/src/CVDBiResultSet.h"
#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/EntryChoice.h"
#include "tools/cvlogs/MomentText.h"

namespace quorbel {

namespace {

struct Choice : EntryChoice {
    LogFilter filter;
};

void AddSince(CLI::App& command, LogFilter& filter) {
    const auto parse = [&filter](const std::string& text) {
        filter.since = ParseMoment(text, std::time(nullptr));
        if (!filter.since) throw CLI::ValidationError("--since", "\"" + text + "\" is no time");
    };
    command
        .add_option_function<std::string>(
            "--since", parse,
            "Not before this local time: 2024-02-01, \"2024-02-01 09:05:03\", @SECONDS, or 15m, 2h, 7d ago")
        ->type_name("TIME");
}

void AddOrder(CLI::App& command, LogFilter& filter) {
    auto* newest = command.add_flag("--newest", filter.newestFirst, "Newest entries first");
    auto* byModule = command.add_flag("--by-module", filter.byModule, "By the names of the sub-modules");
    auto* byLevel = command.add_flag("--by-level", filter.byLevel, "By level, the least first");
    newest->excludes(byModule)->excludes(byLevel);
    byModule->excludes(byLevel);
}

void AddNumber(CLI::App& command, const char* name, std::int64_t& number, const char* help) {
    // Unsigned: a sign is wrong usage.
    command
        .add_option_function<std::uint32_t>(
            name, [&number](std::uint32_t value) { number = value; }, help)
        ->type_name("N");
}

// None stands for no wish at all.
std::vector<int> LevelsFrom(EventLevel lowest) {
    std::vector<int> levels;
    if (lowest == EventLevel::None) return levels;
    for (int level = static_cast<int>(lowest); level <= static_cast<int>(EventLevel::Fatal); ++level) {
        levels.push_back(level);
    }
    return levels;
}

std::string EntryLine(const std::string& module, const EntryRow& entry) {
    const std::string part = entry.Text("module");
    return entry.Text("tempcol") + " " + module + (part.empty() ? "" : "." + part) + " " + entry.LevelTag() +
           " " + entry.Message();
}

void Query(const Choice& choice) {
    LogFilter filter = choice.filter;
    filter.levels = LevelsFrom(choice.level);
    filter.messagePattern = choice.messagePattern;
    filter.timePattern = choice.timePattern;
    const auto database = OpenFor(choice);
    PrintChosen(*database->Query(choice.module, filter), choice,
                [&](const EntryRow& entry) { return EntryLine(choice.module, entry); });
}

}  // namespace

void DeclareQuery(CLI::App& app) {
    const auto choice = std::make_shared<Choice>();
    auto* command =
        app.add_subcommand("query", "Print a module's entries, in the order they were written in");
    AddEntryOptions(*command, *choice, "Only entries of this level and above");
    command->add_option("--sub", choice->filter.modules, "Only this sub-module; may be given more than once")
        ->type_name("NAME")
        ->allow_extra_args(false);
    AddSince(*command, choice->filter);
    AddOrder(*command, choice->filter);
    AddNumber(*command, "--limit", choice->filter.pageSize, "At most this many entries; 0 is no limit");
    AddNumber(*command, "--offset", choice->filter.offset, "Leave out this many entries first");
    command->callback([choice] { Query(*choice); });
}

}  // namespace quorbel
