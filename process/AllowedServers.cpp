#include "process/AllowedServers.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "util/FileStamp.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kFileName[] = "servers";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kSchemes[] = {"http", "https"};
/// A server may decode these to what parts or leaves a directory.
constexpr std::string_view kHidden[] = {"%2e", "%2f", "%5c"};

std::string_view Trimmed(std::string_view line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == line.npos) return {};
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

bool HidesSegments(const std::string& path) {
    for (std::size_t at = path.find('%'); at != path.npos; at = path.find('%', at + 1)) {
        const std::string_view code = std::string_view(path).substr(at, 3);
        for (const std::string_view hidden : kHidden) {
            if (EqualNoCase(code, hidden)) return true;
        }
    }
    return false;
}

/// What a line of the file permits; nothing for a line that is no address of a paging server.
std::optional<ServerAddress> ReadLine(std::string_view line) {
    if (line.find('\0') != line.npos) return {};
    auto prefix = ReadServerAddress(line, Scheme::Needed);
    if (!prefix || !prefix->isPlain || HidesSegments(prefix->path)) return {};
    if (std::ranges::find(kSchemes, prefix->scheme) == std::end(kSchemes)) return {};
    while (prefix->path.ends_with('/')) prefix->path.pop_back();
    return prefix;
}

/// Whether the path begins with the same segments; `prefix` does not end with a slash.
bool IsBelow(const std::string& path, const std::string& prefix) {
    return path.starts_with(prefix) && (path.size() == prefix.size() || path[prefix.size()] == '/');
}

bool IsPermittedBy(const ServerAddress& prefix, const ServerAddress& address) {
    return address.scheme == prefix.scheme && address.host == prefix.host && address.port == prefix.port &&
           IsBelow(address.path, prefix.path);
}

struct Descriptor {
    int number;
    ~Descriptor() {
        if (number >= 0) close(number);
    }
};

/// False with `errno` telling why.
bool ReadWhole(const std::string& path, std::string& text) {
    const Descriptor file{
        open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};  // never waits, whatever stands there
    char piece[4096];
    ssize_t count = file.number < 0 ? -1 : 1;
    while (count > 0) {
        count = read(file.number, piece, sizeof piece);
        if (count > 0) text.append(piece, static_cast<std::size_t>(count));
    }
    return count == 0;
}

bool IsAbsent(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;  // a link that leads nowhere is there
}

}  // namespace

AllowedServers::AllowedServers(std::string_view text) : hasFile_(true) {
    for (std::size_t number = 1; !text.empty() && problem_.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = Trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.starts_with('#')) continue;
        if (const auto prefix = ReadLine(line)) {
            prefixes_.push_back(*prefix);
        } else {
            problem_ = "line " + std::to_string(number) + " is no address of a paging server";
        }
    }
}

AllowedServers AllowedServers::FromFile(const std::string& path) {
    if (IsAbsent(path)) return {};
    std::string text;
    const bool isRead = ReadWhole(path, text);
    const char* reason = isRead ? "" : strerror(errno);
    AllowedServers servers(text);
    if (!isRead) servers.problem_ = std::string("cannot be read: ") + reason;
    if (!servers.problem_.empty()) servers.problem_ = path + ": " + servers.problem_;
    return servers;
}

std::string AllowedServers::Refusal(std::string_view url) const {
    if (!hasFile_) return {};
    if (!problem_.empty()) return problem_;
    const auto address = ReadServerAddress(url);
    if (!address) return "an address that cannot be read";
    if (HidesSegments(address->path)) return address->Server() + " with an encoded dot, slash or backslash";
    for (const ServerAddress& prefix : prefixes_) {
        if (IsPermittedBy(prefix, *address)) return {};
    }
    return address->Server();
}

const AllowedServers& SiteServers() {
    static thread_local AllowedServers servers;
    static thread_local FileStamp stamp;
    const std::string path = std::string(g_strConfigDir) + "/" + kFileName;
    const FileStamp now(path);
    if (!stamp.IsReliable() || !(now == stamp)) {
        stamp = {};  // what fails in the middle counts as not read
        servers = AllowedServers::FromFile(path);
        stamp = now;
    }
    return servers;
}

}  // namespace quorbel
