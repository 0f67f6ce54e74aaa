#include "process/ServerAddress.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <new>

#include "process/HttpTransfer.h"

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
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c | 0x20) : c; });
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

}  // namespace quorbel
