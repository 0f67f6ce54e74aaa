#pragma once

#include <cstddef>
#include <string>

#include "process/CommandParameters.h"
#include "util/TextBuffer.h"

// Posts one command to a paging server over HTTP or HTTPS and collects the reply. Nothing but std::bad_alloc
// is thrown, nothing is logged; results are the transport library's codes. Only http and https addresses are
// followed, never a redirect, and an HTTP error status is a reply like any other. One thread at a time.

/// The transport's callback for reply bytes and headers. Appends `count` bytes to the TextBuffer `user`, or
/// writes them to standard output without one; `size` is ignored, it is always 1. Returns `count`, also when
/// memory ran out (the reply is then short), and 0 for null data.
extern "C" std::size_t Curl_GetCallBackResult(void* data, std::size_t size, std::size_t count,
                                              void* user) noexcept;

namespace quorbel {

/// The transport's own words for a result code.
const char* TransportErrorText(int code);

struct PostTarget {
    std::string url;     ///< backslashes are posted as slashes; empty gives the code of a malformed URL
    std::string caFile;  ///< the certificate bundle
};

/// Posts the lines as a form body. With a fail-over address, a refused connection is tried there once more
/// with the same body; the buffers, either of which may be null, then hold only that reply.
int PostUrlencoded(const PostTarget& target, std::span<const std::string> lines, TextBuffer* reply,
                   const std::string& failoverUrl, TextBuffer* headers);

/// Posts the lines and one file as a multipart form. The reply then begins with the response headers. Cuts
/// each line at its "=" for good, so a second post of the same lines carries only the file; receivers know it
/// so.
int PostMultipart(const PostTarget& target, std::span<std::string> lines, const std::string& attachment,
                  const std::string& attachmentField, TextBuffer* reply);

/// Posts a command to `url` and, when that fails in any way, to `url2` unless it is empty. The last attempt's
/// reply, followed by the transport's error text if it failed, goes to `output` (`size` bytes,
/// zero-terminated, cut to fit). Returns 0, the last attempt's code, or -1 with `output` untouched when `url`
/// is empty.
int PostCommand(char* output, std::size_t size, CommandParameters& command, const std::string& url,
                const std::string& url2, const std::string& caFile);

}  // namespace quorbel
