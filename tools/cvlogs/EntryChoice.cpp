#include "tools/cvlogs/EntryChoice.h"

#include <CLI/CLI.hpp>

#include <stdexcept>

#include "cvdblib/sqlite3/src/CVDBiResultSet.h"
#include "tools/cvlogs/LevelOption.h"
#include "tools/operator/Program.h"

namespace quorbel {

namespace {

void AddFormat(CLI::App& command, EntryFormat& format) {
    auto* json = command.add_flag_callback(
        "--json", [&format] { format = EntryFormat::Json; }, "Print one JSON object a line");
    auto* tsv = command.add_flag_callback(
        "--tsv", [&format] { format = EntryFormat::Tsv; },
        "Print fields between tabs, below a line of the columns' names");
    json->excludes(tsv);
}

bool LacksWildcard(const std::string& pattern) {
    return !pattern.empty() && pattern.find_first_of("%_") == pattern.npos;
}

}  // namespace

void AddEntryOptions(CLI::App& command, EntryChoice& choice, const std::string& levelHelp) {
    AddDatabaseOptions(command, choice.database);
    NotEmpty(command.add_option("--module", choice.module, "The module, letter for letter"))
        ->type_name("NAME")
        ->required();
    AddLevelOption(command, choice.level, levelHelp);
    command
        .add_option("--grep", choice.messagePattern,
                    "Only messages like this; \"%\" is any text, \"_\" any character")
        ->type_name("PATTERN");
    command
        .add_option("--time", choice.timePattern, "Only local times like this, such as \"02/01/2024 09:%\"")
        ->type_name("PATTERN");
    AddFormat(command, choice.format);
}

OpenDatabase OpenFor(const EntryChoice& choice) {
    const std::string path = DatabaseOf(choice.database, choice.module);
    return OpenForReading(path, choice.module);
}

void PrintChosen(const CVDBiResultSet& rows, const EntryChoice& choice, const EntryToLine& toLine) {
    if (rows.GetRowCount() > 0) return PrintEntries(rows, choice.format, toLine);
    const bool hint = LacksWildcard(choice.messagePattern) || LacksWildcard(choice.timePattern);
    throw std::runtime_error(std::string("no such entries") +
                             (hint ? "; a pattern stands for the whole text, as in \"%disk%\"" : ""));
}

}  // namespace quorbel
