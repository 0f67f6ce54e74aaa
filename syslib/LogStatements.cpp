#include "syslib/LogStatements.h"

#include <algorithm>

#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

std::string Quoted(const std::string& text) {
    return "'" + CVSQLite3Database::DoubleQuotes(text) + "'";
}

std::string Joined(const std::vector<std::string>& parts) {
    std::string joined;
    for (const auto& part : parts) joined += (joined.empty() ? "" : ", ") + part;
    return joined;
}

template <class Value, class ToText>
std::string List(const std::vector<Value>& values, ToText toText) {
    std::vector<std::string> texts;
    texts.reserve(values.size());
    for (const auto& value : values) texts.push_back(toText(value));
    return Joined(texts);
}

std::string Conditions(const LogFilter& filter) {
    std::string clause;
    const auto add = [&](const std::string& condition) {
        clause += (clause.empty() ? "WHERE " : "AND ") + condition + " ";
    };
    if (!filter.modules.empty()) add("module IN (" + List(filter.modules, Quoted) + ")");
    if (!filter.levels.empty()) {
        add("level IN (" + List(filter.levels, [](int level) { return std::to_string(level); }) + ")");
    }
    if (!filter.messagePattern.empty()) add("message LIKE " + Quoted(filter.messagePattern));
    if (filter.level) add("level = " + std::to_string(*filter.level));
    // The start time brings its own AND, with a blank before it; a second one would be a syntax error.
    if (filter.since) {
        clause += (clause.empty() ? "WHERE  timestamp>=" : " AND timestamp>=") +
                  std::to_string(*filter.since) + " ";
    }
    if (!filter.timePattern.empty()) add("tempcol LIKE " + Quoted(filter.timePattern));
    return clause;
}

std::string Ordering(const LogFilter& filter) {
    std::vector<std::string> keys;
    if (filter.newestFirst) keys.emplace_back("timestamp DESC");
    if (filter.byModule) keys.emplace_back("module");
    if (filter.byLevel) keys.emplace_back("level");
    return keys.empty() ? "" : "ORDER BY " + Joined(keys);
}

std::string Page(const LogFilter& filter) {
    // Always there: an offset needs a limit before it, and -1 is none.
    return " LIMIT " + std::to_string(filter.pageSize < 1 ? -1 : filter.pageSize) + " OFFSET " +
           std::to_string(std::max<std::int64_t>(0, filter.offset)) + " ";
}

bool HasQuote(const std::string& text) {
    return text.find('\'') != std::string::npos;
}

}  // namespace

std::string CreateLogTable(const std::string& table) {
    return "CREATE TABLE " + table +
           " (id INTEGER PRIMARY KEY AUTOINCREMENT, module VARCHAR(50), timestamp INTEGER, level SMALLINT, "
           "message VARCHAR(100), line INTEGER, srcfile VARCHAR(50));";
}

std::string DropLogTable(const std::string& table) {
    return "DROP TABLE " + table + ";";
}

std::string EmptyLogTable(const std::string& table) {
    return "DELETE FROM " + table + ";";
}

std::string RecordLogModule(const std::string& module, const std::string& table) {
    return "INSERT INTO metatable (module_name, table_name) VALUES (" + Quoted(module) + ", " +
           Quoted(table) + ");";
}

std::string ForgetLogModule(const std::string& module) {
    return "DELETE FROM metatable WHERE module_name=" + Quoted(module) + ";";
}

std::string InsertLogRecord(const std::string& table) {
    return "INSERT INTO " + table +
           " (module, timestamp, level, message, line, srcfile) VALUES (?, ?, ?, ?, ?, ?);";
}

std::string InsertLogRecordAsText(const std::string& table, const LogRecord& record) {
    if (HasQuote(record.module) || HasQuote(record.message) || HasQuote(record.sourceFile)) {
        throw CVDBProcessorFatalException("A text with a quote cannot be inserted as text.");
    }
    return "INSERT INTO " + table + " (module, timestamp, level, message, line, srcfile) VALUES ('" +
           record.module + "', " + std::to_string(record.timestamp) + ", " + std::to_string(record.level) +
           ", '" + record.message + "', " + std::to_string(record.line) + ", '" + record.sourceFile + "');";
}

std::string SelectLogEntries(const std::string& table, const LogFilter& filter) {
    const bool withTime = filter.withTime || !filter.timePattern.empty();
    const std::string columns =
        withTime ? "*,strftime('%m/%d/%Y %H:%M:%S',timestamp,'unixepoch','localtime') AS tempcol" : "*";
    return "SELECT " + columns + " FROM " + table + " " + Conditions(filter) + Ordering(filter) +
           Page(filter) + ";";
}

std::string CountLogEntries(const std::string& table, const LogCountFilter& filter) {
    std::string conditions;
    const auto add = [&](const std::string& condition) {
        conditions += (conditions.empty() ? " WHERE " : " AND ") + condition;
    };
    if (filter.level != 0) add("level=" + std::to_string(filter.level));
    if (!filter.timePattern.empty()) add("entry_time LIKE " + Quoted(filter.timePattern));
    if (!filter.messagePattern.empty()) add("message LIKE " + Quoted(filter.messagePattern));
    return "SELECT  strftime('%m/%d/%Y %H:%M:%S',timestamp,'unixepoch','localtime') entry_time, message, "
           "level,'4','5',COUNT(*) as records,'7' FROM " +
           table + conditions + " GROUP BY entry_time, message, level;";
}

std::string LogTableName(const std::string& module) {
    // The prefix keeps clear of SQL's keywords, of leading digits and of the tables that are not a module's.
    std::string name = "log_";
    for (const char c : module) name += IsAlphanumeric(c) ? Fold(c) : '_';
    return name;
}

bool IsLogTableName(const std::string& text) {
    if (text.empty() || (text[0] >= '0' && text[0] <= '9')) return false;
    return std::all_of(text.begin(), text.end(), [](char c) { return IsAlphanumeric(c) || c == '_'; });
}

}  // namespace quorbel
