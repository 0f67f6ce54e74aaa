#include "tools/cvlogs/DatabaseSource.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "syslib/LogTables.h"
#include "syslib/LogText.h"
#include "tools/operator/ProgressLine.h"

namespace quorbel {

namespace {

constexpr char kRowsAtATime[] = "1000";

enum LogColumn { kId, kModule, kTimestamp, kLevel, kMessage, kLine, kSourceFile };
constexpr char kLogColumns[] = "id, module, timestamp, level, message, line, srcfile";

std::int64_t Number(std::string_view cell) {
    return std::strtoll(std::string(cell).c_str(), nullptr, 10);
}

}  // namespace

DatabaseSource::DatabaseSource(const std::string& path, std::string module, std::string like)
    : database_(path), module_(std::move(module)), like_(std::move(like)) {
    LogTables tables(database_);
    tables.Reload();
    const std::string* table = tables.Find(module_);
    if (table == nullptr) throw std::runtime_error("no module \"" + module_ + "\" in " + path);
    table_ = *table;
    CVSQLite3ResultSet highest;
    database_.ExecuteSelectQuery("SELECT MAX(id) FROM " + table_ + ";", highest);
    const char* id = highest.GetCell(0, 0);
    if (id != nullptr) highestId_ = Number(id);
}

bool DatabaseSource::Next(LogEntry& entry) {
    if (row_ == rows_.GetRowCount() && !ReadRows()) return false;
    const std::int64_t timestamp = Number(Cell(kTimestamp));
    std::string module = module_;
    if (!Cell(kModule).empty()) module.append(".").append(Cell(kModule));
    const auto level = static_cast<unsigned>(Number(Cell(kLevel)));
    text_ = LogLine(module, level, Cell(kMessage), timestamp);

    const std::string_view text = text_;
    entry = {.text = text.substr(0, text.find_last_not_of("\r\n") + 1),
             .time = text.substr(0, text.find(' ', text.find(' ') + 1)),
             .message = Cell(kMessage),
             .level = static_cast<int>(level),
             .timestamp = timestamp,
             .id = Number(Cell(kId)),
             .line = static_cast<int>(Number(Cell(kLine))),
             .sourceFile = Cell(kSourceFile)};
    entry.module = text.substr(entry.time.size() + 1, module.size());
    lastId_ = *entry.id;
    ++row_;
    return true;
}

bool DatabaseSource::ReadRows() {
    std::string sql =
        std::string("SELECT ") + kLogColumns + " FROM " + table_ + " WHERE id > " + std::to_string(lastId_);
    if (!like_.empty()) sql += " AND message LIKE '" + CVSQLite3Database::DoubleQuotes(like_) + "'";
    sql += std::string(" ORDER BY id LIMIT ") + kRowsAtATime + ";";
    row_ = 0;
    ShowProgress(lastId_, highestId_, "entries");
    return database_.ExecuteSelectQuery(sql, rows_) && rows_.GetRowCount() > 0;
}

std::string_view DatabaseSource::Cell(int column) const {
    const char* cell = rows_.GetCell(row_, column);
    return cell != nullptr ? cell : "";
}

}  // namespace quorbel
