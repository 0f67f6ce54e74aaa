#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "cvdblib/sqlite3/src/CVDBiResultSet.h"
#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/EntryChoice.h"

namespace quorbel {

namespace {

std::string CountLine(const EntryRow& entry) {
    constexpr std::size_t kWidth = 7;
    std::string count = entry.Text("records");
    if (count.size() < kWidth) count.insert(0, kWidth - count.size(), ' ');
    return count + " " + entry.Text("entry_time") + " " + entry.LevelTag() + " " + entry.Message();
}

void Count(const EntryChoice& choice) {
    const LogCountFilter filter = {.level = static_cast<int>(choice.level),
                                   .timePattern = choice.timePattern,
                                   .messagePattern = choice.messagePattern};
    const auto database = OpenFor(choice);
    PrintChosen(*database->CountQuery(choice.module, filter), choice, CountLine);
}

}  // namespace

void DeclareCount(CLI::App& app) {
    const auto choice = std::make_shared<EntryChoice>();
    auto* command = app.add_subcommand("count", "Count a module's entries that are alike and of one second");
    AddEntryOptions(*command, *choice, "Only entries of this very level");
    command->callback([choice] { Count(*choice); });
}

}  // namespace quorbel
