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

std::string Message(const std::string& url, const std::string& url2 = {}) {
    return "<SendStdMessage><szURL>" + url + "</szURL><szRecipientName>oncall</szRecipientName><szURL2>" +
           url2 + "</szURL2></SendStdMessage>";
}

std::string Administration(const std::string& url) {
    return "<DeleteGroup><szURL>" + url +
           "</szURL><szAdminName>adm</szAdminName><szAdminPassword>secret</szAdminPassword>"
           "<szGroupName>Ops</szGroupName></DeleteGroup>";
}

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
         {Message(good.Url()), Message(good.Url() + "/x", good.Url()), Administration(good.Url()),
          Message("http://u:p@" + Authority(good) + "\\cmd"), Message(good.Url(), "\n  ")}) {
        EXPECT_THAT(BodyOf(frontEnd.Serve(request)), HasSubstr("Result>OK good")) << request;
    }
    EXPECT_EQ(good.Posts().size(), 5u);
}

TEST_F(AllowedServersTest, RefuseAnyOther) {
    Allow(good.Url());
    const std::string told = "http://" + Authority(evil);
    ExpectRefused(Message(evil.Url()), told);
    ExpectRefused(Administration(evil.Url()), told);
    ExpectRefused(Message(good.Url(), evil.Url()), told);
    ExpectRefused(Message("http://" + Authority(good) + "@" + Authority(evil) + "/cmd"), told);
    ExpectRefused(Message("http://" + Authority(evil) + "\\@" + Authority(good) + "/cmd"), told);
    ExpectRefused(Message("http://" + Authority(good) + "/cmdx"), "http://" + Authority(good));
    ExpectRefused(Message("http://" + Authority(good) + "/cmd/%2e%2e/x"),
                  "http://" + Authority(good) + " with an encoded dot, slash or backslash");
    ExpectRefused(Message("http://" + Authority(good) + "/cmd x"), "an address that cannot be read");
    EXPECT_TRUE(evil.Posts().empty());
    EXPECT_TRUE(good.Posts().empty());
}

TEST_F(AllowedServersTest, RefuseEverythingWhenTheFileIsBroken) {
    Allow(good.Url() + "\nhttp://\n");
    ExpectRefused(Message(good.Url()), "../../config/servers: line 2 is no address of a paging server");
    fs::remove(frontEnd.Site() / "config/servers");
    fs::create_directory(frontEnd.Site() / "config/servers");
    ExpectRefused(Administration(good.Url()), "../../config/servers: cannot be read: Is a directory");
    EXPECT_TRUE(good.Posts().empty());
}

TEST_F(AllowedServersTest, LeaveOtherFaultsAsTheyAre) {
    Allow(good.Url());
    EXPECT_EQ(BodyOf(frontEnd.Serve(Message(""))), FaultDocument("2004 Missing URL"));
    EXPECT_EQ(BodyOf(frontEnd.Serve("<SendStdMessage><szURL>" + evil.Url() + "</szURL></SendStdMessage>")),
              FaultDocument("2004 Missing recipient"));
}
