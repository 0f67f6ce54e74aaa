#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// An address of a paging server in the parts that the transport goes by, as the transport library reads it: never a
/// second reader, which might see another host in it.
struct ServerAddress {
    std::string scheme;    ///< lower case, as `host`
    std::string host;      ///< a number in any notation as four decimal ones; IPv6 in brackets
    std::string port;      ///< the scheme's own when the address names none
    std::string path;      ///< begins with a slash; dot segments resolved
    bool isPlain = false;  ///< holds nothing but these: no user, query or fragment

    /// scheme://host:port, fit for a log: without user, password and path, and of an endless host only its beginning.
    std::string Server() const { return scheme + "://" + host.substr(0, kLongestHost) + ":" + port; }

    static constexpr std::size_t kLongestHost = 255;  ///< no name that can be looked up is longer
};

/// How the reader takes an address without a scheme.
enum class Scheme {
    Guessed,  ///< as a transfer does
    Needed,
};

/// Nothing for what the transport would refuse as malformed. Throws std::bad_alloc.
std::optional<ServerAddress> ReadServerAddress(std::string_view url, Scheme scheme = Scheme::Guessed);

}  // namespace quorbel
