// The operator's list of paging servers: what is outside it gets a fault, and nothing is posted anywhere.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr char kNotPermitted[] = "2004 Paging server not permitted";

class AllowedServersTest : public testing::Test {
protected:
    void Allow(const std::string& text) { frontEnd.Site().Write("config/servers", text); }
    /// 127.0.0.1:PORT of a server.
    static std::string Authority(const LoopbackServer& server) {
        const std::string url = server.Url();
        return url.substr(7, url.find('/', 7) - 7);
    }
    void ExpectRefused(const std::string& request, const std::string& entry) {
        SCOPED_TRACE(request);
        const ProgramResult result = frontEnd.Serve(request);
        EXPECT_EQ(BodyOf(result), FaultDocument(kNotPermitted));
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_THAT(frontEnd.Log(), HasSubstr("[ERROR] Paging server not permitted: " + entry + "\n"));
        fs::remove(frontEnd.Site() / "logs/soap_log.txt");
    }

    LoopbackServer good{{.body = "OK good"}};
    LoopbackServer evil{{.body = "OK evil"}};
    const FrontEnd frontEnd;
};

}  // namespace

TEST_F(AllowedServersTest, ServeRequestsToThem) {
    Allow("# ours\n" + good.Url() + "\n");
    for (const std::string& request :
         {MessageTo(good.Url()), MessageTo(good.Url() + "/x", SecondUrl(good.Url())),
          DeleteGroupAt(good.Url()), MessageTo("http://u:p@" + Authority(good) + "\\cmd"),
          MessageTo(good.Url(), SecondUrl("\n  "))}) {
        EXPECT_THAT(BodyOf(frontEnd.Serve(request)), HasSubstr("Result>OK good")) << request;
    }
    EXPECT_EQ(good.Posts().size(), 5u);
}

TEST_F(AllowedServersTest, RefuseAnyOther) {
    Allow(good.Url());
    const std::string told = "http://" + Authority(evil);
    ExpectRefused(MessageTo(evil.Url()), told);
    ExpectRefused(DeleteGroupAt(evil.Url()), told);
    ExpectRefused(MessageTo(good.Url(), SecondUrl(evil.Url())), told);
    ExpectRefused(MessageTo("http://" + Authority(good) + "@" + Authority(evil) + "/cmd"), told);
    ExpectRefused(MessageTo("http://" + Authority(evil) + "\\@" + Authority(good) + "/cmd"), told);
    ExpectRefused(MessageTo("http://" + Authority(good) + "/cmdx"), "http://" + Authority(good));
    ExpectRefused(MessageTo("http://" + Authority(good) + "/cmd/%2e%2e/x"),
                  "http://" + Authority(good) + " with an encoded dot, slash or backslash");
    ExpectRefused(MessageTo("http://" + Authority(good) + "/cmd x"), "an address that cannot be read");
    EXPECT_TRUE(evil.Posts().empty());
    EXPECT_TRUE(good.Posts().empty());
}

TEST_F(AllowedServersTest, RefuseEverythingWhenTheFileIsBroken) {
    Allow(good.Url() + "\nhttp://\n");
    ExpectRefused(MessageTo(good.Url()), "../../config/servers: line 2 is no address of a paging server");
    EXPECT_TRUE(good.Posts().empty());
}

TEST_F(AllowedServersTest, LeaveOtherFaultsAsTheyAre) {
    Allow(good.Url());
    EXPECT_EQ(BodyOf(frontEnd.Serve(MessageTo(""))), FaultDocument("2004 Missing URL"));
    EXPECT_EQ(BodyOf(frontEnd.Serve("<SendStdMessage><szURL>" + evil.Url() + "</szURL></SendStdMessage>")),
              FaultDocument("2004 Missing recipient"));
}
