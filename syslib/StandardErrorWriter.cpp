#include "syslib/StandardErrorWriter.h"

#include <unistd.h>

#include <cerrno>

#include "syslib/EventLine.h"

namespace quorbel {

bool StandardErrorWriter::setProperty(const std::string& /*key*/, const std::string& /*value*/) {
    return true;
}

int StandardErrorWriter::DoWork(const std::string& module, unsigned level, const std::string& message,
                                int /*extra*/, const char* /*userText*/, std::time_t time) {
    std::string line = EventLine(module, level, message, time);
    if (!line.ends_with('\n')) line += '\n';
    ssize_t written = -1;
    do {
        written = write(STDERR_FILENO, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(line.size()) ? 1 : 0;
}

bool StandardErrorWriter::isReady() {
    return true;
}

}  // namespace quorbel
