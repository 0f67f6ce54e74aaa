#include <stdexcept>
#include <vector>

#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tools/cvlogs/Commands.h"

namespace quorbel {

namespace {

// None stands for no wish at all.
std::vector<int> LevelsFrom(LogLevel lowest) {
    std::vector<int> levels;
    if (lowest == LogLevel::None) return levels;
    for (int level = static_cast<int>(lowest); level <= static_cast<int>(LogLevel::Fatal); ++level) {
        levels.push_back(level);
    }
    return levels;
}

std::string EntryLine(const std::string& module, const EntryRow& entry) {
    const std::string part = entry.Text("module");
    return entry.Text("tempcol") + " " + module + (part.empty() ? "" : "." + part) + " " + entry.LevelTag() +
           " " + entry.Message();
}

std::string CountLine(const EntryRow& entry) {
    constexpr std::size_t kWidth = 7;
    std::string count = entry.Text("records");
    if (count.size() < kWidth) count.insert(0, kWidth - count.size(), ' ');
    return count + " " + entry.Text("entry_time") + " " + entry.LevelTag() + " " + entry.Message();
}

EntryFormat FormatOf(const EntryChoice& choice) {
    if (choice.asJson) return EntryFormat::Json;
    return choice.asTsv ? EntryFormat::Tsv : EntryFormat::Lines;
}

bool LacksWildcard(const std::string& pattern) {
    return !pattern.empty() && pattern.find_first_of("%_") == pattern.npos;
}

void PrintChosen(const CVDBiResultSet& rows, const EntryChoice& choice, const EntryToLine& toLine) {
    if (rows.GetRowCount() > 0) return PrintEntries(rows, FormatOf(choice), toLine);
    const bool hint = LacksWildcard(choice.filter.messagePattern) || LacksWildcard(choice.filter.timePattern);
    throw std::runtime_error(std::string("no such entries") +
                             (hint ? "; a pattern stands for the whole text, as in \"%disk%\"" : ""));
}

}  // namespace

void QueryEntries(const EntryChoice& choice) {
    LogFilter filter = choice.filter;
    filter.levels = LevelsFrom(choice.level);
    const auto database = OpenForReading(DatabaseOf(choice.database, choice.module), choice.module);
    PrintChosen(*database->Query(choice.module, filter), choice,
                [&](const EntryRow& entry) { return EntryLine(choice.module, entry); });
}

void CountEntries(const EntryChoice& choice) {
    const LogCountFilter filter = {.level = static_cast<int>(choice.level),
                                   .timePattern = choice.filter.timePattern,
                                   .messagePattern = choice.filter.messagePattern};
    const auto database = OpenForReading(DatabaseOf(choice.database, choice.module), choice.module);
    PrintChosen(*database->CountQuery(choice.module, filter), choice, CountLine);
}

}  // namespace quorbel
