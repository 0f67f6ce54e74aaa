#include "resident/Connection.h"

#include <fcntl.h>
#include <poll.h>
#include <stdio_ext.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "CVException.h"

namespace quorbel {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Waits until there is something to read; false once the deadline is over.
bool AwaitInput(int connection, Clock::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (left <= milliseconds::zero()) return false;
    pollfd input = {connection, POLLIN, 0};
    return poll(&input, 1, static_cast<int>(left.count())) != 0;  // an error shows in the read
}

void LimitPauses(int connection, milliseconds pause) {
    const timeval limit = {static_cast<time_t>(pause.count() / 1000),
                           static_cast<suseconds_t>(pause.count() % 1000 * 1000)};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

/// Opens /dev/null above the standard streams. One of them that was closed at the start leads there, too: the next file
/// that is opened would get its number, and with it what is printed.
int OpenNowhere() {
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    return descriptor;
}

/// For the rest of the process.
int Nowhere() {
    static const int descriptor = OpenNowhere();
    return descriptor;
}

void LeadStandardStreamsTo(int descriptor) {
    dup2(descriptor, STDIN_FILENO);
    dup2(descriptor, STDOUT_FILENO);
}

}  // namespace

bool ReadHeader(int connection, ScgiHeader& header, milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    char piece[4096];
    while (header.Wanted() > 0) {
        const ssize_t count = recv(connection, piece, std::min(header.Wanted(), sizeof piece), MSG_DONTWAIT);
        if (count > 0) {
            header.Add({piece, static_cast<std::size_t>(count)});
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR) || !AwaitInput(connection, deadline)) {
            return false;
        }
    }
    return header.Status() == ScgiHeader::State::Complete;
}

StandardStreams::StandardStreams(int connection, milliseconds pause) {
    LimitPauses(connection, pause);
    LeadStandardStreamsTo(connection);
    close(connection);
}

StandardStreams::~StandardStreams() {
    if (std::ferror(stdout) == 0) std::fflush(stdout);
    __fpurge(stdout);  // a failed flush keeps the text, and the next client would get it
    __fpurge(stdin);
    std::clearerr(stdout);
    std::clearerr(stdin);
    LeadStandardStreamsTo(Nowhere());
}

void DetachStandardStreams() {
    if (Nowhere() < 0)
        throw CVException("Connection", __LINE__, "cannot open /dev/null", GetSystemErrorText());
    LeadStandardStreamsTo(Nowhere());
}

}  // namespace quorbel
