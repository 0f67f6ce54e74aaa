#pragma once

#include <memory>
#include <string>

#include "CVconLock.h"
#include "syslib/CVsysEventLogWriterInterface.h"

namespace quorbel {

/// A writer and the lock that lets one thread at a time into it.
///
/// Held by shared_ptr: by the event log objects that use the writer and, for as long as it is at work, by the
/// thread that writes. The writer is deleted by whoever lets go last, so a stopped log never deletes a writer
/// under a thread that is still inside it.
class GuardedWriter {
public:
    explicit GuardedWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer, std::string name = {});

    /// See CVsysEventLogWriterInterface::DoWork.
    int Write(const std::string& module, unsigned level, const std::string& message, int extra,
              const char* userText, std::time_t time);
    bool IsReady();
    /// The logger's name, different for each writer of the process: "SOAP_logger".
    const std::string& Name() const { return name_; }

private:
    CVconLock lock_;
    std::unique_ptr<CVsysEventLogWriterInterface> writer_;
    const std::string name_;
};

}  // namespace quorbel
