#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CVDBiResultSet;

namespace quorbel {

/// One entry of a module's table, in the order of its columns.
struct LogRecord {
    std::string module{};        ///< the sub-module; which module it is decides the table
    std::int64_t timestamp = 0;  ///< seconds since the epoch
    int level = 0;               ///< an LogLevel's number
    std::string message{};
    int line = -1;  ///< -1: none
    std::string sourceFile{};
};

/// Which entries of a module are wanted, and in what order. What is left empty restricts nothing. Patterns
/// are SQL's LIKE: "%" for any text, "_" for any character, ASCII letters without regard to case.
struct LogFilter {
    std::vector<std::string> modules{};  ///< sub-modules
    std::vector<int> levels{};
    std::string messagePattern{};
    std::optional<int> level{};
    std::optional<std::int64_t> since{};  ///< seconds since the epoch
    std::string timePattern{};            ///< on the local time as "02/01/2024 09:05:03", month first
    bool newestFirst = false;
    bool byModule = false;
    bool byLevel = false;
    std::int64_t pageSize = 0;  ///< below 1: all
    std::int64_t offset = 0;
    bool withTime = true;  ///< adds the column "tempcol" with the local time; a time pattern adds it as well
};

struct LogCountFilter {
    int level = 0;  ///< 0: any
    std::string timePattern{};
    std::string messagePattern{};
};

}  // namespace quorbel

/// Stores log entries by module and finds them again.
///
/// For one thread at a time. Every failure is a CVDBProcessorFatalException.
class CVLogDBProcessorInterface {
public:
    virtual ~CVLogDBProcessorInterface() = default;

    /// Creates the module's table when it has none. False, with nothing stored, for an empty module name.
    virtual bool Insert(const std::string& module, const quorbel::LogRecord& record) = 0;
    /// The same through a statement that holds the values as text, and so refuses texts with a single quote.
    virtual bool InsertAsText(const std::string& module, const quorbel::LogRecord& record) = 0;

    /// The module's entries with every column of its table. A module without a table is a failure.
    virtual std::unique_ptr<CVDBiResultSet> Query(const std::string& module,
                                                  const quorbel::LogFilter& filter) = 0;
    /// Equal entries of the same second counted as one row: the time is column 0, then the message, its
    /// level, two fillers, the count ("records") and a filler, which keep the places of an entry's columns.
    virtual std::unique_ptr<CVDBiResultSet> CountQuery(const std::string& module,
                                                       const quorbel::LogCountFilter& filter) = 0;

    /// The modules that have a table, sorted.
    virtual std::vector<std::string> Modules() = 0;
    /// Removes every entry of every module.
    virtual bool Truncate() = 0;
    /// Removes a module with its entries.
    virtual bool Drop(const std::string& module) = 0;
};
