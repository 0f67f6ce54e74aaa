#include "syslib/GuardedWriter.h"

#include <utility>

namespace quorbel {

GuardedWriter::GuardedWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer, std::string name)
    : writer_(std::move(writer)), name_(std::move(name)) {}

int GuardedWriter::Write(const std::string& module, unsigned level, const std::string& message, int extra,
                         const char* userText, std::time_t time) {
    const ScopedLock guard(&lock_);
    return writer_->DoWork(module, level, message, extra, userText, time);
}

bool GuardedWriter::IsReady() {
    const ScopedLock guard(&lock_);
    return writer_->isReady();
}

}  // namespace quorbel
