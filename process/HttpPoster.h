#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "process/CommandRecords.h"
#include "process/HttpTransfer.h"
#include "util/TextBuffer.h"

namespace quorbel {

/// The capacity for the names and the values of a form body.
inline constexpr std::size_t kFieldCapacity = 10000;

/// Encodes a name or a value for a form body, as it would fit into a field of `capacity` bytes: encoding
/// stops without notice where fewer than five bytes remain. Letters, digits and "/_." travel unchanged, any
/// other byte as "%" and two lower-case hexadecimal digits, a byte above ASCII as "%ff"
/// (kept for compatibility).
std::string EncodeFormText(std::string_view text, std::size_t capacity);

/// The form body of a command's lines, each split at its first "=". Empty lines are skipped, but one that is
/// not the first still leaves its separator to the next. Throws std::bad_alloc.
TextBuffer BuildFormBody(std::span<const std::string> lines);

}  // namespace quorbel

// Posts one command to a paging server over HTTP or HTTPS and collects the reply. Nothing but std::bad_alloc
// is thrown, nothing is logged; results are the transport library's codes. Only http and https addresses are followed,
// never a redirect, and an HTTP error status is a reply like any other.

/// The transport's callback for reply bytes and headers. Appends `count` bytes to the TextBuffer `user`, or
/// writes them to standard output without one; `size` is ignored, it is always 1. Returns `count`, also when
/// memory ran out (the buffer then knows), and 0 for null data.
extern "C" std::size_t Curl_GetCallBackResult(void* data, std::size_t size, std::size_t count,
                                              void* user) noexcept;

namespace quorbel {

/// The result for a command without an address.
inline constexpr int kNoAddress = -1;

/// The transport's own words for a result code.
const char* TransportErrorText(int code);

/// Posts the lines as a form body. With a fail-over address, a refused connection is tried there once more
/// with the same body; the buffers, either of which may be null, then hold only that reply.
int PostUrlencoded(const PostTarget& target, std::span<const std::string> lines, TextBuffer* reply,
                   const std::string& failoverUrl, TextBuffer* headers);

/// Posts the lines and one file as a multipart form. The reply then begins with the response headers. Cuts
/// each line at its "=" for good, so a second post of the same lines carries only the file: kept for compatibility.
int PostMultipart(const PostTarget& target, std::span<std::string> lines, const std::string& attachment,
                  const std::string& attachmentField, TextBuffer* reply);

/// The addresses are borrowed.
struct PostAddresses {
    std::string_view url;
    std::string_view url2;  ///< may be empty
    std::string caFile;     ///< as in PostTarget
};

/// What became of a command.
struct PostReport {
    PostAttempt primary;
    std::optional<PostAttempt> secondary;  ///< only when that address was tried

    const PostAttempt& Last() const { return secondary ? *secondary : primary; }
};

/// Posts a command to `url` and, when that fails in any way, to `url2`; but not when this machine ran out of memory.
/// `reply` holds the last attempt's reply, followed by the transport's error text if it failed. Nobody reads further
/// than `size` bytes: a server that sends without end takes at most a little more memory. Returns 0, the last
/// attempt's code, or kNoAddress with nothing done when `url` is empty.
int PostForReply(TextBuffer& reply, std::size_t size, CommandParameters& command, const PostAddresses& to,
                 PostReport* report = nullptr);

/// The same with the reply in `output`: `size` bytes, zero-terminated, cut to fit; left alone when `size` is 0 or `url`
/// is empty.
int PostCommand(char* output, std::size_t size, CommandParameters& command, std::string_view url,
                std::string_view url2, const std::string& caFile, PostReport* report = nullptr);

}  // namespace quorbel
