#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ProcessMark.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/PreparedStatement.h"
#include "syslib/CVLogDBProcessorInterface.h"
#include "syslib/LogTables.h"

/// A log database in an SQLite file, shared with any number of processes: one table per module, and
/// "metatable" that says which is whose. docs/log-database.md tells the layout.
///
/// Writers switch the file to write-ahead logging, where they hardly wait for each other: the "-wal" and
/// "-shm" files beside it belong to it. An entry outlives the process that wrote it; a power failure may take
/// the last ones.
class CVLogSQLiteProcessor : public CVLogDBProcessorInterface {
public:
    /// With `create` the file and its "metatable" are made when missing. Without it nothing is changed by
    /// opening, and a missing file is a failure. A path that cannot be opened takes 25 s, see IsReadableDatabase.
    /// `busyWait` takes the place of the minute that each statement waits while another program holds the
    /// database.
    CVLogSQLiteProcessor(const std::string& path, bool create, CVSQLite3Database::BusyWait busyWait = {});

    bool Insert(const std::string& module, const quorbel::LogRecord& record) override;
    bool InsertAsText(const std::string& module, const quorbel::LogRecord& record) override;
    std::unique_ptr<CVDBiResultSet> Query(const std::string& module,
                                          const quorbel::LogFilter& filter) override;
    std::unique_ptr<CVDBiResultSet> CountQuery(const std::string& module,
                                               const quorbel::LogCountFilter& filter) override;
    std::vector<std::string> Modules() override;
    bool Truncate() override;
    bool Drop(const std::string& module) override;

private:
    using Store = void (CVLogSQLiteProcessor::*)(const std::string& table, const quorbel::LogRecord& record);

    bool InsertBy(Store store, const std::string& module, const quorbel::LogRecord& record);
    void StoreBound(const std::string& table, const quorbel::LogRecord& record);
    void StoreAsText(const std::string& table, const quorbel::LogRecord& record);
    std::string TableOf(const std::string& module);
    std::unique_ptr<CVDBiResultSet> Select(const std::string& sql);

    std::unique_ptr<CVSQLite3Database> database_;
    quorbel::LogTables tables_;
    quorbel::ProcessMark process_;
    // By table. The database cannot be opened again while there is one.
    std::map<std::string, quorbel::PreparedStatement> inserts_;
};
