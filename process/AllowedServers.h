#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "process/ServerAddress.h"

namespace quorbel {

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
