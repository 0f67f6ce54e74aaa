#include "resident/RequestEnvironment.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/ScgiClient.h"

using namespace quorbel;

namespace {

ScgiHeader Header(const std::vector<std::string>& variables) {
    ScgiHeader header;
    const std::string text = ScgiHeaderText(variables, 5);
    for (std::size_t at = 0; header.Wanted() > 0;) {
        const std::size_t count = header.Wanted();
        header.Add(std::string_view(text).substr(at, count));
        at += count;
    }
    return header;
}

std::string Value(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "(none)" : value;
}

}  // namespace

TEST(RequestEnvironment, HoldsWhatTheProgramReadsAndNothingElseOfARequest) {
    char** const before = environ;
    char zone[] = "TZ=kept", stale[] = "REMOTE_USER=starter", proxy[] = "https_proxy=http://evil";
    char* started[] = {zone, stale, proxy, nullptr};
    environ = started;
    {
        RequestEnvironment environment;
        EXPECT_EQ(Value("REMOTE_USER"), "(none)") << "what the process was started with is no request's";
        EXPECT_EQ(Value("https_proxy"), "(none)") << "of whoever started the service";
        environment.Enter(Header({"REQUEST_METHOD=POST", "REMOTE_USER=ops", "LD_PRELOAD=/x.so",
                                  "http_proxy=evil", "HTTP_PROXY=evil", "SSL_CERT_FILE=/x", "TZ=steered"}));
        EXPECT_EQ(Value("REQUEST_METHOD"), "POST");
        EXPECT_EQ(Value("CONTENT_LENGTH"), "5");
        EXPECT_EQ(Value("REMOTE_USER"), "ops");
        EXPECT_EQ(Value("TZ"), "kept");
        for (const char* name : {"LD_PRELOAD", "http_proxy", "HTTP_PROXY", "SSL_CERT_FILE", "SCGI"}) {
            EXPECT_EQ(Value(name), "(none)") << name;
        }
        environment.Enter(Header({"REQUEST_METHOD=GET"}));
        EXPECT_EQ(Value("REQUEST_METHOD"), "GET");
        EXPECT_EQ(Value("REMOTE_USER"), "(none)") << "of the request before";
        environment.Leave();
        EXPECT_EQ(Value("REQUEST_METHOD"), "(none)");
        EXPECT_EQ(Value("TZ"), "kept");
    }
    environ = before;
}
