#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "LockFile.h"
#include "syslib/CVsysEventLogWriterInterface.h"
#include "syslib/LogFile.h"
#include "syslib/LogWaits.h"

/// Appends entries to a text file that any number of processes share, and turns it into numbered archives by
/// size. docs/log-files.md describes the files.
///
/// Every entry takes the lock "<file>.lock", opens the file, writes one whole line and closes it again:
/// between entries the log is not open and no lock is held (the lock's file stays open), so the log may be moved
/// or deleted at any time, and the writer may be carried over a fork. An entry waits for the lock as long as
/// LogWaits.h tells.
class CVsysEventLogFileWriter : public CVsysEventLogWriterInterface {
public:
    /// `identity` is the name that failures to set it up are listed under in the system log; failures to write
    /// are listed under the entry's module. `sleep` replaces the waits for the lock.
    explicit CVsysEventLogFileWriter(std::string identity,
                                     quorbel::WriterMode mode = quorbel::WriterMode::Write,
                                     std::function<void(std::chrono::microseconds)> sleep = {});

    CVsysEventLogFileWriter(const CVsysEventLogFileWriter&) = delete;
    CVsysEventLogFileWriter& operator=(const CVsysEventLogFileWriter&) = delete;

    /// Keys: numFiles, bytesPerFiles, filePath, autoAppend (present means on, whatever the value),
    /// perProcessFile.
    bool setProperty(const std::string& key, const std::string& value) override;
    int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
               const char* userText, std::time_t time) override;
    bool isReady() override;
    quorbel::WriterDescription Describe() const override;

    /// Creates the file when it is not there. A path whose directory takes no new files is refused, and the
    /// old path stays.
    bool setFilePath(const std::string& value);

    /// Makes sure that the log file's own lock can be had, and deletes the lock files that dead processes left
    /// in the log directory: the writer is not ready otherwise. To be called once all keys are set.
    void PrepareDirectory();

private:
    void Append(const std::string& module, unsigned level, const std::string& message, std::time_t time);
    quorbel::LockRetry RetryNow() const;
    void OpenOnce(const std::string& path) const;
    std::string TargetOf(const std::string& module) const;

    std::string directory_;
    std::string path_;
    bool perProcessFile_ = false;
    bool autoAppend_ = false;
    quorbel::ArchiveRule archive_;
    quorbel::LogFileEnd end_;
    const std::string identity_;
    const quorbel::WriterMode mode_;
    const std::function<void(std::chrono::microseconds)> wait_;
    quorbel::LogPatience patience_;
    std::string refusedPath_;  // while there is no other
    std::string notReady_;     // why
    bool initialised_ = true;
};
