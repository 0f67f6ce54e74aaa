#include "soap/CVsoap.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "soap/Methods.h"
#include "syslib/CVLogInterface.h"

using namespace quorbel;

char g_szCommand[256];
int currentMethodCode = kNoMethod;
char m_szHostName[256];
char m_szPath[1024];
StartArguments gArguments;

namespace quorbel {

namespace {

/// CONTENT_LENGTH in bytes; 0 when there is none to go by. A number that no buffer could hold counts as none.
long LengthIn(const char* text) {
    if (text == nullptr) return 0;
    const long length = std::strtol(text, nullptr, 10);
    return length < 1 || length == LONG_MAX ? 0 : length;
}

long AnnouncedLength(CVLogInterface& log) {
    const char* text = std::getenv("CONTENT_LENGTH");
    log.Trace(nullptr, "CONTENT_LENGTH=%s", text == nullptr ? "(NULL)" : text);
    return LengthIn(text);
}

/// One read; 0 at the end of input, and for an error, which is not told apart from it.
long ReadPiece(char* buffer, long size) {
    ssize_t count = 0;
    do {
        count = read(STDIN_FILENO, buffer, static_cast<std::size_t>(size));
    } while (count < 0 && errno == EINTR);
    return count < 0 ? 0 : static_cast<long>(count);
}

/// Fills the buffer piece by piece; returns how much arrived. Never reads beyond `length`.
long ReadPieces(char* buffer, long length, CVLogInterface& log) {
    long total = 0;
    bool atEnd = false;
    while (total < length && !atEnd) {
        const long count = ReadPiece(buffer + total, length - total);
        log.Trace(nullptr, "Data [size=%d] read", static_cast<int>(count));
        atEnd = count == 0;
        total += count;
    }
    if (atEnd) log.Trace(nullptr, "EOF reached");
    return total;
}

}  // namespace

HeapText ReadRequestBody(CVLogInterface& log) {
    const long length = AnnouncedLength(log);
    if (length == 0) return nullptr;

    log.Trace(nullptr, "Allocating memory buffer [size=%d]", static_cast<int>(length + 1));
    HeapText body(static_cast<char*>(std::calloc(static_cast<std::size_t>(length) + 1, 1)));
    if (!body) return nullptr;

    log.Trace(nullptr, "Reading request data in memory buffer");
    if (ReadPieces(body.get(), length, log) != length) {
        log.Trace(nullptr, "Partial request data read in memory buffer: [%s]", body.get());
        return nullptr;
    }
    log.Trace(nullptr, "Complete request data read in memory buffer: [%s]", body.get());
    return body;
}

void DropRequestBody() {
    char dropped[16384];
    long left = LengthIn(std::getenv("CONTENT_LENGTH"));
    for (long count = 1; left > 0 && count > 0; left -= count) {
        count = ReadPiece(dropped, std::min(left, static_cast<long>(sizeof dropped)));
    }
}

}  // namespace quorbel
