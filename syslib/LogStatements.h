#pragma once

#include <string>

#include "syslib/CVLogDBProcessorInterface.h"

namespace quorbel {

// The SQL of the log database. Other programs read the same file, and operators search for these texts in
// traces: their wording is fixed, doubled blanks included. Table names are identifiers and go in as they are;
// every other text from outside has its quotes doubled.

inline constexpr const char* kLogMetatable = "metatable";
inline constexpr const char* kCreateLogMetatable =
    "CREATE TABLE metatable (id INTEGER, module_name VARCHAR(50), table_name VARCHAR(50));";
inline constexpr const char* kSelectLogModules =
    "SELECT module_name, table_name FROM metatable ORDER BY module_name;";

std::string CreateLogTable(const std::string& table);
std::string DropLogTable(const std::string& table);
std::string EmptyLogTable(const std::string& table);
std::string RecordLogModule(const std::string& module, const std::string& table);
std::string ForgetLogModule(const std::string& module);

/// With a "?" for each field of a LogRecord, in its order.
std::string InsertLogRecord(const std::string& table);
/// With the values in the text; throws CVDBProcessorFatalException for a text with a single quote.
std::string InsertLogRecordAsText(const std::string& table, const LogRecord& record);

std::string SelectLogEntries(const std::string& table, const LogFilter& filter);
std::string CountLogEntries(const std::string& table, const LogCountFilter& filter);

/// The table a module's entries go to unless another module has it: "log_" and the module's name in lower
/// case, with "_" for what an identifier may not hold.
std::string LogTableName(const std::string& module);
/// Whether the text can stand in a statement as a table name.
bool IsLogTableName(const std::string& text);

}  // namespace quorbel
