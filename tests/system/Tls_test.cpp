// HTTPS to the paging server: nothing is posted to one that the site's CA bundle does not vouch for.

#include <curl/curl.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <thread>

#include "process/HttpPoster.h"
#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"
#include "tests/system/TestAuthority.h"

using namespace quorbel;

using testing::HasSubstr;

namespace {

/// When not empty, stands for every directory of authorities that the transport asks.
std::string directoryOfAuthorities;

constexpr char kThisMachine[] = "IP:127.0.0.1";
constexpr char kBundle[] = "config/ca-bundle.crt";
constexpr char kNotVouchedFor[] = "SSL peer certificate or SSH remote key was not OK";
constexpr char kNoBundle[] = "Problem with the SSL CA cert (path? access rights?)";

/// An HTTPS server on a free port of 127.0.0.1 that counts the posts it takes.
class TlsServer {
public:
    explicit TlsServer(const Credential& credential)
        : server_(credential.certificate.get(), credential.key.get()) {
        server_.set_keep_alive_max_count(1);
        server_.Post(".*", [this](const httplib::Request&, httplib::Response& response) {
            ++posts_;
            response.set_content("OK over TLS\r\n", "text/plain");
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~TlsServer() {
        server_.stop();
        thread_.join();
    }

    std::string Url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/cmd"; }
    int Posts() const { return posts_; }

private:
    httplib::SSLServer server_;
    std::atomic<int> posts_ = 0;
    int port_ = 0;
    std::thread thread_;
};

void ExpectAnswers(const FrontEnd& frontEnd, const std::string& url) {
    EXPECT_THAT(BodyOf(frontEnd.Serve(MessageTo(url))), HasSubstr("Result>OK over TLS"));
    EXPECT_THAT(BodyOf(frontEnd.Serve(DeleteGroupAt(url))), HasSubstr("Result>OK over TLS"));
}

/// A message that was not sent is told in a response, an administration command in a fault.
void ExpectRefusals(const FrontEnd& frontEnd, const std::string& url, const std::string& text) {
    EXPECT_THAT(BodyOf(frontEnd.Serve(MessageTo(url))), HasSubstr("Result>" + text + "</"));
    EXPECT_EQ(BodyOf(frontEnd.Serve(DeleteGroupAt(url))), FaultDocument("2012 " + text));
}

}  // namespace

/// The TLS library's own operation, in front of it in this program.
extern "C" int X509_STORE_load_path(X509_STORE* store, const char* path) {
    static const auto load = reinterpret_cast<decltype(&X509_STORE_load_path)>(dlsym(RTLD_NEXT, __func__));
    return load(store, directoryOfAuthorities.empty() ? path : directoryOfAuthorities.c_str());
}

TEST(Tls, PostsToAServerThatTheBundleVouchesFor) {
    const TestAuthority authority;
    const TestAuthority another;
    const TlsServer server(authority.Issue(kThisMachine));
    const FrontEnd frontEnd;
    frontEnd.Site().Write(kBundle, another.Pem() + authority.Pem());
    ExpectAnswers(frontEnd, server.Url());
    EXPECT_EQ(server.Posts(), 2);
}

TEST(Tls, PostsNothingToAnyOtherServer) {
    const TestAuthority authority;
    const TestAuthority unknown;
    const struct {
        const char* what;
        Credential credential;
        std::optional<std::string> bundle;
        const char* text;
    } cases[] = {
        {"wrong host", authority.Issue("DNS:pager.example,IP:127.0.0.2"), authority.Pem(), kNotVouchedFor},
        {"expired", authority.Issue(kThisMachine, -1), authority.Pem(), kNotVouchedFor},
        {"unknown authority", unknown.Issue(kThisMachine), authority.Pem(), kNotVouchedFor},
        {"no bundle", authority.Issue(kThisMachine), std::nullopt, kNoBundle},
        {"empty bundle", authority.Issue(kThisMachine), "", kNoBundle},
        {"damaged bundle", authority.Issue(kThisMachine), authority.Pem().substr(0, 200), kNoBundle},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TlsServer server(c.credential);
        const FrontEnd frontEnd;
        if (c.bundle) frontEnd.Site().Write(kBundle, *c.bundle);
        ExpectRefusals(frontEnd, server.Url(), c.text);
        EXPECT_EQ(server.Posts(), 0);
    }
}

TEST(Tls, TheSystemsDirectoryVouchesForNobody) {
    const TestAuthority ours;
    const TestAuthority systems;
    const TlsServer server(systems.Issue(kThisMachine));
    const TempDir directory;
    const std::string bundle = directory.Write("ca-bundle.crt", ours.Pem());
    directory.Write(systems.NameInADirectory(), systems.Pem());
    directoryOfAuthorities = directory.Path();

    CURL* unguarded = curl_easy_init();  // the transport as it is by itself
    curl_easy_setopt(unguarded, CURLOPT_URL, server.Url().c_str());
    curl_easy_setopt(unguarded, CURLOPT_CAINFO, bundle.c_str());
    curl_easy_setopt(unguarded, CURLOPT_COPYPOSTFIELDS, "");
    TextBuffer reply;
    curl_easy_setopt(unguarded, CURLOPT_WRITEFUNCTION, Curl_GetCallBackResult);
    curl_easy_setopt(unguarded, CURLOPT_WRITEDATA, &reply);
    EXPECT_EQ(curl_easy_perform(unguarded), CURLE_OK) << "this test sees nothing";
    curl_easy_cleanup(unguarded);

    for (const std::string attachment : {"", "/etc/hostname"}) {
        CommandParameters command;
        command.attachment = attachment;
        char output[100];
        EXPECT_NE(PostCommand(output, sizeof output, command, server.Url(), "", bundle), 0);
        EXPECT_STREQ(output, kNotVouchedFor);
    }
    EXPECT_EQ(server.Posts(), 1) << "only the one without this program's settings";
    directoryOfAuthorities.clear();
}

TEST(Tls, OneProcessTakesEachNewBundle) {
    const TestAuthority ours;
    const TlsServer server(ours.Issue(kThisMachine));
    const TempDir directory;
    const auto post = [&](const std::string& bundle) {
        CommandParameters command;
        char output[100];
        return PostCommand(output, sizeof output, command, server.Url(), "",
                           directory.Write("ca-bundle.crt", bundle));
    };
    EXPECT_EQ(post(ours.Pem()), 0);
    EXPECT_EQ(post(ours.Pem()), 0);
    EXPECT_NE(post(TestAuthority().Pem()), 0) << "the old bundle still vouches";
    EXPECT_EQ(post(ours.Pem()), 0);
    EXPECT_EQ(server.Posts(), 3);
}

TEST(Tls, NeverFallsBackToPlainHttp) {
    const LoopbackServer plain;
    const FrontEnd frontEnd;
    frontEnd.Site().Write(kBundle, TestAuthority().Pem());
    ExpectRefusals(frontEnd, ReplaceAll(plain.Url(), "http:", "https:"), "SSL connect error");
    EXPECT_TRUE(plain.Posts().empty());
}

TEST(Tls, FailsOverToAServerThatTheBundleVouchesFor) {
    const TestAuthority authority;
    const TlsServer expired(authority.Issue(kThisMachine, -1));
    const TlsServer good(authority.Issue(kThisMachine));
    const FrontEnd frontEnd;
    frontEnd.Site().Write(kBundle, authority.Pem());
    EXPECT_THAT(BodyOf(frontEnd.Serve(MessageTo(expired.Url(), SecondUrl(good.Url())))),
                HasSubstr("Result>OK over TLS"));
    EXPECT_EQ(expired.Posts(), 0);
    EXPECT_EQ(good.Posts(), 1);
}
