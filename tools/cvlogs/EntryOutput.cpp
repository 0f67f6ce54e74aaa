#include "tools/cvlogs/EntryOutput.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "syslib/LogLevel.h"
#include "tools/operator/Output.h"
#include "tools/operator/Text.h"

namespace quorbel {

namespace {

constexpr std::string_view kNumberColumns[] = {"id", "timestamp", "level", "line", "records"};

// As JSON spells them: no leading zeros, no plus sign. The database holds what was put into it.
bool IsWholeNumber(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    if (text.empty() || (text[0] == '0' && text.size() > 1)) return false;
    return text.find_first_not_of("0123456789") == text.npos;
}

std::string JsonValue(std::string_view column, const char* cell) {
    if (cell == nullptr) return "null";
    const bool isNumber =
        std::find(std::begin(kNumberColumns), std::end(kNumberColumns), column) != std::end(kNumberColumns);
    return isNumber && IsWholeNumber(cell) ? cell : JsonString(cell);
}

// A column whose name is a quoted literal holds that literal in every row.
std::vector<int> ShownColumns(const CVDBiResultSet& rows) {
    std::vector<int> columns;
    for (int column = 0; column < rows.GetColumnCount(); ++column) {
        if (*rows.GetColumnName(column) != '\'') columns.push_back(column);
    }
    return columns;
}

std::string JsonObject(const CVDBiResultSet& rows, int row, const std::vector<int>& columns) {
    std::string object;
    for (const int column : columns) {
        const char* name = rows.GetColumnName(column);
        object += object.empty() ? '{' : ',';
        object += JsonString(name) + ":";
        object += JsonValue(name, rows.GetCell(row, column));
    }
    return object + "}";
}

std::vector<std::string> TsvFields(const std::vector<int>& columns, const auto& textOf) {
    std::vector<std::string> fields;
    for (const int column : columns) {
        const char* text = textOf(column);
        fields.push_back(TsvField(text != nullptr ? text : ""));
    }
    return fields;
}

void PrintJson(const CVDBiResultSet& rows) {
    const auto columns = ShownColumns(rows);
    for (int row = 0; row < rows.GetRowCount(); ++row) PrintLine(JsonObject(rows, row, columns));
}

void PrintTsv(const CVDBiResultSet& rows) {
    const auto columns = ShownColumns(rows);
    PrintFields(TsvFields(columns, [&](int column) { return rows.GetColumnName(column); }));
    for (int row = 0; row < rows.GetRowCount(); ++row) {
        PrintFields(TsvFields(columns, [&](int column) { return rows.GetCell(row, column); }));
    }
}

}  // namespace

std::string EntryRow::Text(std::string_view column) const {
    for (int index = 0; index < rows_.GetColumnCount(); ++index) {
        if (rows_.GetColumnName(index) != column) continue;
        const char* cell = rows_.GetCell(row_, index);
        return cell != nullptr ? cell : "";
    }
    return {};
}

std::string EntryRow::LevelTag() const {
    return std::string(LogLevelTag(static_cast<unsigned>(std::atoi(Text("level").c_str()))));
}

std::string EntryRow::Message() const {
    std::string message = Text("message");
    message.erase(message.find_last_not_of("\r\n") + 1);
    return message;
}

void PrintEntries(const CVDBiResultSet& rows, EntryFormat format, const EntryToLine& toLine) {
    if (format == EntryFormat::Json) return PrintJson(rows);
    if (format == EntryFormat::Tsv) return PrintTsv(rows);
    for (int row = 0; row < rows.GetRowCount(); ++row) PrintLine(toLine(EntryRow(rows, row)));
}

}  // namespace quorbel
