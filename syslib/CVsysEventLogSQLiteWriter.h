#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "ProcessMark.h"
#include "syslib/CVLogSQLiteProcessor.h"
#include "syslib/CVsysEventLogWriterInterface.h"
#include "syslib/LogWaits.h"

/// Stores entries in a log database, where they can be queried later.
///
/// A module name is cut at its first ".": "SOAP.Send" is the sub-module "Send" in the table of "SOAP". Levels
/// outside 1 to 7 are stored as 0.
///
/// An entry waits for a database that another program holds as long as LogWaits.h tells. One that finds the
/// file removed or replaced, or this a child of the process that opened it, opens the database anew. That is
/// done under a LockFile beside it, so that no program takes parts of a removed database for the new one's.
class CVsysEventLogSQLiteWriter : public CVsysEventLogWriterInterface {
public:
    /// `identity` is the name that failures are listed under in the system log.
    explicit CVsysEventLogSQLiteWriter(std::string identity,
                                       quorbel::WriterMode mode = quorbel::WriterMode::Write);

    /// Keys: dbfilename (or filename), truncate.
    bool setProperty(const std::string& key, const std::string& value) override;
    /// What operator() does.
    int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
               const char* userText, std::time_t time) override;
    /// True once a database was opened.
    bool isReady() override;
    quorbel::WriterDescription Describe() const override;

    /// Opens the database, creating the file when it is missing. A file that this process cannot read and
    /// write, or a directory that takes no new files, is refused at once; no database is open then.
    bool setDbFileName(const std::string& name);
    /// When set, empties the tables of the database that is open now; one opened later is left alone. A
    /// program that starts for each request loses its entries each time. False when nothing was emptied.
    bool setMakeDbTruncateFlag(bool truncate);
    /// Gives 1 when the entry is stored, else 0. `extra` goes to the column "line", `userText` to "srcfile".
    int operator()(const std::string& module, unsigned level, const std::string& message, int extra,
                   const char* userText, std::time_t time);

private:
    /// A name that failures are reported under, and the text for those that bring none of their own.
    struct Operation {
        const char* source;
        const char* unknown;
    };

    using FileId = std::pair<dev_t, ino_t>;

    void BeginWaits();
    void OpenAnew();
    bool Open(const FileId& before);
    void WaitForLock(std::chrono::microseconds time);
    bool IsStillThere() const;
    bool WaitWhileBusy(int asked);

    template <class Action>
    bool Reporting(const std::string& identity, const Operation& operation, Action action);

    const std::string identity_;
    const quorbel::WriterMode mode_;
    std::string path_;
    std::string notReady_ = "there is no dbfilename";
    quorbel::LogPatience patience_;
    std::chrono::steady_clock::time_point deadline_;  // of the wait that is going on
    quorbel::ProcessMark process_;
    FileId file_{};                                         // the database that is open
    std::unique_ptr<CVLogDBProcessorInterface> processor_;  // null: not ready
};
