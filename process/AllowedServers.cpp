#include "process/AllowedServers.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "process/HttpTransfer.h"
#include "src/Descriptor.h"
#include "util/FileStamp.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

struct FreeUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct FreePart {
    void operator()(char* part) const { curl_free(part); }
};

/// One part of an address; nothing when it has none.
std::optional<std::string> Part(CURLU* url, CURLUPart part, unsigned flags = 0) {
    char* text = nullptr;
    const CURLUcode code = curl_url_get(url, part, &text, flags);
    if (code == CURLUE_OUT_OF_MEMORY) throw std::bad_alloc();
    const std::unique_ptr<char, FreePart> owned(text);
    if (code != CURLUE_OK) return {};
    return text;
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), Fold);
    return text;
}

}  // namespace

std::optional<ServerAddress> ReadServerAddress(std::string_view url, Scheme scheme) {
    if (url.size() > kLongestUrl) return {};
    const std::unique_ptr<CURLU, FreeUrl> parser(curl_url());
    if (!parser) throw std::bad_alloc();
    // A transfer reads its address with these flags.
    const unsigned flags = CURLU_NON_SUPPORT_SCHEME | (scheme == Scheme::Guessed ? CURLU_GUESS_SCHEME : 0);
    const CURLUcode code = curl_url_set(parser.get(), CURLUPART_URL, TransportUrl(url).c_str(), flags);
    if (code == CURLUE_OUT_OF_MEMORY) throw std::bad_alloc();
    if (code != CURLUE_OK) return {};

    const auto host = Part(parser.get(), CURLUPART_HOST);
    if (!host) return {};
    const auto zone = Part(parser.get(), CURLUPART_ZONEID);
    ServerAddress address;
    address.scheme = LowerCase(Part(parser.get(), CURLUPART_SCHEME).value_or(""));
    address.host = LowerCase(*host) + (zone ? "%" + *zone : "");
    address.port = Part(parser.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT).value_or("");
    address.path = Part(parser.get(), CURLUPART_PATH).value_or("/");
    address.isPlain = !Part(parser.get(), CURLUPART_USER) && !Part(parser.get(), CURLUPART_PASSWORD) &&
                      !Part(parser.get(), CURLUPART_QUERY) && !Part(parser.get(), CURLUPART_FRAGMENT);
    return address;
}

namespace {

constexpr char kFileName[] = "servers";
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kSchemes[] = {"http", "https"};
/// A server may decode these to what parts or leaves a directory.
constexpr std::string_view kHidden[] = {"%2e", "%2f", "%5c"};

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

/// False with `errno` telling why.
bool ReadWhole(const std::string& path, std::string& text) {
    const Descriptor file(
        open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));  // never waits, whatever stands there
    char piece[4096];
    ssize_t count = file < 0 ? -1 : 1;
    while (count > 0) {
        count = read(file, piece, sizeof piece);
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
        const std::string line = TrimChars(text.substr(0, end), kBlanks);
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
