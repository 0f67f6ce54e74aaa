#pragma once

#include <map>
#include <string>

class CVSQLite3Database;

namespace quorbel {

/// Which table of a log database holds which module's entries: what `metatable` says, as last read.
///
/// Tables are created and dropped together with their row, in one transaction that looks at `metatable`
/// again, since other processes do the same. Throws CVDBexception where nothing else is said.
class LogTables {
public:
    using Map = std::map<std::string, std::string>;

    /// Reads nothing yet.
    explicit LogTables(CVSQLite3Database& database) : database_(database) {}

    /// Creates `metatable` unless it is there.
    void CreateMetatable();
    void Reload() { tables_ = Read(); }

    const Map& All() const { return tables_; }
    /// Null for a module that is not in the map.
    const std::string* Find(const std::string& module) const;
    /// Throws CVDBProcessorFatalException "Unable to create module [..] table [..]. ..".
    const std::string& FindOrCreate(const std::string& module);
    /// The same for a module whose table turned out to be gone.
    const std::string& CreateAgain(const std::string& module);
    /// The module's table goes, and so does its row.
    void Drop(const std::string& module, const std::string& table);

private:
    Map Read();
    void Create(const std::string& module);
    bool CreateInTransaction(const std::string& module, Map& tables, std::string& table);

    CVSQLite3Database& database_;
    Map tables_;
};

}  // namespace quorbel
