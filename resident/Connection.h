#pragma once

#include <chrono>

#include "resident/Scgi.h"

namespace quorbel {

/// Reads a request's header from a connected socket, and not a byte of what follows it. False when the peer sends
/// something else, ends, or takes longer than `timeout` for all of it.
bool ReadHeader(int connection, ScgiHeader& header, std::chrono::milliseconds timeout);

/// Makes a connection the process's standard input and output, for the object's lifetime; takes the descriptor over.
///
/// Nothing of one connection reaches the next: what could not be written is thrown away at the end, and both streams
/// then lead to /dev/null. A peer that neither sends nor takes anything for `pause` counts as gone. SIGPIPE must be
/// ignored. One object at a time.
class StandardStreams {
public:
    StandardStreams(int connection, std::chrono::milliseconds pause);
    ~StandardStreams();

    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;
};

/// Lets standard input and output lead to /dev/null. Throws CVException when that cannot be opened.
void DetachStandardStreams();

}  // namespace quorbel
