#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "CVconLock.h"
#include "syslib/CVsysEventLogWriterInterface.h"
#include "syslib/LogSettings.h"

namespace quorbel {

/// A writer and the lock that lets one thread at a time into it. No thread can be killed inside.
///
/// Held by shared_ptr: by the event log objects that use the writer and, for as long as it is at work, by the
/// thread that writes. The last of them deletes the writer, so a stopped log never deletes one that a
/// thread is still writing with.
class SharedWriter {
public:
    explicit SharedWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer, std::string name = {});

    /// See CVsysEventLogWriterInterface::DoWork.
    int Write(const std::string& module, unsigned level, const std::string& message, int extra,
              const char* userText, std::time_t time);
    /// Never waits: while an entry is being written it tells how things stood before.
    bool IsReady();
    WriterDescription Describe();
    /// The name it is registered under, different for each writer of the process: "SOAP_logger".
    const std::string& Name() const { return name_; }

private:
    CVconLock lock_;
    std::unique_ptr<CVsysEventLogWriterInterface> writer_;
    std::atomic<bool> wasReady_;
    const std::string name_;
};

/// Whose log a writer is made for.
struct LogOwner {
    std::string module;
    std::string configDirectory;
    std::string configPath;
    /// The writer's name; empty stands for the module's.
    std::string name;
};

/// Makes the writer that the settings choose and gives it every key. Null for an unknown writer, and when the
/// shared writer of "[common]" is chosen but cannot be made. A writer that is there may still be not ready.
std::shared_ptr<SharedWriter> CreateLogWriter(const LogSettings& settings, const LogOwner& owner);

/// What the writer that the settings choose would do, asked of a writer that only looks. The settings of a
/// module that chooses "common" are those of "[common]".
WriterDescription DescribeLogWriter(const LogSettings& settings, const std::string& module);

/// Whether there is a writer of that name. "common" is none, but a way to choose one.
bool IsLogWriter(std::string_view name);

}  // namespace quorbel
