#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// The paging servers that the operator allows requests to name: the file `servers` beside `dir`, described in
/// docs/servers-file.md. One object of it decides for one state of the file.
class AllowedServers {
public:
    /// Without a file: every address is permitted.
    AllowedServers() = default;
    /// With a file of this content.
    explicit AllowedServers(std::string_view text);
    /// The file at `path`. Does not throw for one that cannot be read: nothing is permitted then.
    static AllowedServers FromFile(const std::string& path);

    bool Permits(std::string_view url) const { return Refusal(url).empty(); }
    /// Why the address is not permitted, for the log: its scheme, host and port, or what is wrong with the file. Empty
    /// when it is permitted.
    std::string Refusal(std::string_view url) const;
    /// What is wrong with the file, such as "line 3 is no address"; nothing is permitted then. Empty when all is well.
    const std::string& Problem() const { return problem_; }
    bool HasFile() const { return hasFile_; }

private:
    bool hasFile_ = false;
    std::vector<ServerAddress> prefixes_;
    std::string problem_;
};

/// The site's: `servers` in g_strConfigDir. Kept, and read again when the file is another one or has changed.
const AllowedServers& SiteServers();

}  // namespace quorbel
