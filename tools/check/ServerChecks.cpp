#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <stdexcept>

#include "CVException.h"
#include "CVioSocket.h"
#include "process/AllowedServers.h"
#include "tools/check/Finding.h"

namespace quorbel {

namespace {

constexpr std::chrono::seconds kLimit{10};

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

std::string WithoutBrackets(const std::string& host) {
    return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

/// Why nothing listens there; empty when a connection is taken.
std::string ConnectFault(const ServerAddress& address) {
    try {
        CVioSocket().Connect(WithoutBrackets(address.host), address.port, kLimit);
        return {};
    } catch (const CVException& exception) {
        return exception.GetMessage() + ": " + exception.GetSystemMessage();
    }
}

/// Why the server is not trusted, or does not speak TLS; empty when all is well. Sends no request.
std::string HandshakeFault(const Site& site, const std::string& url) {
    const std::unique_ptr<CURL, EndTransfer> transfer(curl_easy_init());
    if (!transfer) throw std::runtime_error("out of memory");
    const std::string bundle = site.config + "/ca-bundle.crt";
    char reason[CURL_ERROR_SIZE] = "";
    CURL* const handle = transfer.get();
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "https");
    curl_easy_setopt(handle, CURLOPT_CAINFO, bundle.c_str());
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, static_cast<long>(kLimit.count()));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, reason);
    const CURLcode code = curl_easy_perform(handle);
    if (code == CURLE_OK) return {};
    return *reason != '\0' ? reason : curl_easy_strerror(code);
}

std::string ServerFault(const Site& site, const std::string& url) {
    const auto address = ReadServerAddress(url);
    if (!address) return "no address of a paging server";
    std::string fault = ConnectFault(*address);
    if (fault.empty() && address->scheme != "http") fault = HandshakeFault(site, url);
    return fault;
}

Finding CheckServer(const Site& site, const std::string& url) {
    const std::string fault = ServerFault(site, url);
    if (fault.empty()) return {State::Ok, "server", url + " takes connections"};
    return {State::Critical, "server", url + ": " + fault};
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
