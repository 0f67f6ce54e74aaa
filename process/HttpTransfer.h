#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "util/TextBuffer.h"

namespace quorbel {

// One post by the transport library, which nothing above this file sees.
//
// Each thread has a transfer handle of its own, made at its first post and kept: a process that posts again and again
// reads the CA bundle once, and again when the file at its path is another one or has changed. All else is new for
// each post: connection, TLS session, host look-up; no cookie or credential is kept. A child process begins with the
// parent's handle and must not post while the parent does, so fork before the first post.

/// Sets up what the first post of a process does otherwise, for a process that only its children post for.
void PrepareTransfers();

/// What happened at one address.
struct PostAttempt {
    int code = 0;                 ///< the transport library's result; 0 when a whole HTTP answer came
    long httpStatus = 0;          ///< 0 when no answer began
    long long received = 0;       ///< bytes of the answer's body
    bool isAnythingSent = false;  ///< false: the server has not seen a byte of the request
    std::chrono::milliseconds duration{0};
};

struct PostTarget {
    std::string_view
        url;  ///< borrowed; posted to as TransportUrl gives it; empty gives the code of a malformed URL
    std::string caFile;  ///< the certificate bundle
};

/// Where an answer goes; either may be null.
struct PostResult {
    TextBuffer* reply = nullptr;
    TextBuffer* headers = nullptr;
};

/// What the transport library takes at most, in bytes; a longer address is refused before anything is made of it.
inline constexpr std::size_t kLongestUrl = 8000000;

/// The address that the transport library is given: backslashes are posted as slashes.
std::string TransportUrl(std::string_view url);

/// Posts a form body that is encoded already. An empty name of the bundle stands for ../config/ca-bundle.crt.
PostAttempt TransferBody(const PostTarget& target, const char* body, const PostResult& result);

/// Posts the lines that have a name and an "=" as parts of a multipart form, and one file. Cuts each line at its "="
/// for good: kept for compatibility.
PostAttempt TransferForm(const PostTarget& target, std::span<std::string> lines, const std::string& fileField,
                         const std::string& file, const PostResult& result);

}  // namespace quorbel
