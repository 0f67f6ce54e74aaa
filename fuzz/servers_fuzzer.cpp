// Feeds a list of paging servers and, behind the first zero byte, an address. What is permitted must lead, as the
// transport library alone reads it, to a server of the list.

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "fuzz/FuzzSupport.h"
#include "process/AllowedServers.h"

using namespace quorbel;

namespace {

constexpr char kFixedList[] = "# ours\nhttp://good.example:8080/cgi/\nhttps://127.0.0.1\n";

/// One part of an address as the transport library reads it.
std::string Raw(std::string url, CURLUPart part) {
    std::replace(url.begin(), url.end(), '\\', '/');
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parser(curl_url(), curl_url_cleanup);
    if (curl_url_set(parser.get(), CURLUPART_URL, url.c_str(),
                     CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        return {};
    }
    char* text = nullptr;
    if (curl_url_get(parser.get(), part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
    std::string owned = text;
    curl_free(text);
    return owned;
}

bool IsOneOfTheFixed(const std::string& url) {
    std::string host = Raw(url, CURLUPART_HOST);
    std::transform(host.begin(), host.end(), host.begin(), [](unsigned char c) { return std::tolower(c); });
    const std::string scheme = Raw(url, CURLUPART_SCHEME);
    const std::string port = Raw(url, CURLUPART_PORT);
    const std::string path = Raw(url, CURLUPART_PATH);
    for (const char* hidden : {"%2e", "%2E", "%2f", "%2F", "%5c", "%5C", "/../"}) {
        if (path.find(hidden) != std::string::npos) return false;
    }
    if (host == "127.0.0.1") return scheme == "https" && port == "443";
    return host == "good.example" && scheme == "http" && port == "8080" &&
           (path == "/cgi" || path.starts_with("/cgi/"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const AllowedServers fixed(kFixedList);
    const std::string input = Text(data, size);
    const std::size_t end = std::min(input.find('\0'), input.size());
    const std::string list = input.substr(0, end);
    const std::string rest = input.substr(std::min(end + 1, input.size()));
    const std::string url = rest.substr(0, rest.find('\0'));  // no request holds such a byte
    const AllowedServers servers(list);
    if (servers.Permits(url)) Require(servers.Problem().empty() && !Raw(url, CURLUPART_HOST).empty());
    if (fixed.Permits(url)) Require(IsOneOfTheFixed(url));
    if (fixed.Permits(list)) Require(IsOneOfTheFixed(list));
    return 0;
}
