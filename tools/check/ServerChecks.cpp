#include <curl/curl.h>

#include <memory>
#include <stdexcept>

#include "process/AllowedServers.h"
#include "tools/check/Finding.h"

namespace quorbel {

namespace {

constexpr long kSeconds = 10;

Finding CheckAllowed(const AllowedServers& allowed) {
    if (!allowed.HasFile())
        return {State::Ok, "servers", "requests may name any address: there is no config/servers"};
    if (allowed.Problem().empty())
        return {State::Ok, "servers", "requests may name those of config/servers only"};
    return {State::Critical, "servers", allowed.Problem() + ": nothing is posted"};
}

struct EndTransfer {
    void operator()(CURL* transfer) const noexcept { curl_easy_cleanup(transfer); }
};

// Connects and greets, and sends no request.
Finding CheckServer(const Site& site, const std::string& url) {
    const std::unique_ptr<CURL, EndTransfer> transfer(curl_easy_init());
    if (!transfer) throw std::runtime_error("out of memory");
    const std::string bundle = site.config + "/ca-bundle.crt";
    char reason[CURL_ERROR_SIZE] = "";
    CURL* const handle = transfer.get();
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_CAINFO, bundle.c_str());
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kSeconds);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, reason);
    const CURLcode code = curl_easy_perform(handle);
    if (code == CURLE_OK) return {State::Ok, "server", url + " takes connections"};
    return {State::Critical, "server", url + ": " + (*reason != '\0' ? reason : curl_easy_strerror(code))};
}

}  // namespace

Findings CheckServers(const Site& site, const std::vector<std::string>& urls) {
    const AllowedServers allowed = AllowedServers::FromFile(site.config + "/servers");
    Findings findings = {CheckAllowed(allowed)};
    for (const auto& url : urls) {
        if (allowed.Permits(url)) {
            findings.push_back(CheckServer(site, url));
        } else {
            findings.push_back(
                {State::Critical, "server", url + " is not one of config/servers: nothing is posted to it"});
        }
    }
    return findings;
}

}  // namespace quorbel
