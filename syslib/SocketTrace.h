#pragma once

#include <mutex>

#include "CVioSocket.h"
#include "syslib/CVLogInterface.h"
#include "util/StringRoutines.h"

namespace quorbel {

/// Lets a socket's bytes go to a log as trace entries "=> ..." and "<= ...", control characters made visible.
/// An entry is cut where the log cuts it. The log must outlive the socket.
inline CVioSocket::Trace TraceTo(CVLogInterface& log) {
    return [&log](const char* format, std::string_view bytes) {
        static std::mutex& oneAtATime = *new std::mutex;  // MakeVisible has one buffer for all threads
        const std::lock_guard guard(oneAtATime);
        const std::string arrow(format, 3);
        log.Trace("CVioSocket", "%s%s", arrow.c_str(), MakeVisible(bytes.data(), bytes.size()));
    };
}

}  // namespace quorbel
