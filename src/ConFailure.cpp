#include "src/ConFailure.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "CVException.h"

namespace quorbel {

void RaiseConFailure(const char* unit, int line, const char* message, int code, int threadId) {
    errno = code;
    const std::string systemMessage = code == 0 ? "" : GetSystemErrorText();
    throw CVconException(threadId == 0 ? gettid() : threadId, unit, line, message, systemMessage);
}

}  // namespace quorbel
