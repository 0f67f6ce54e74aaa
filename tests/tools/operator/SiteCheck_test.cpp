#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/support/LockHolder.h"
#include "tests/support/LoopbackServer.h"
#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

const std::string kAuthority = ReadFile(AUTHORITIES_DIR "/authority.pem");
const std::string kExpired = ReadFile(AUTHORITIES_DIR "/expired.pem");  // its time was over in 2018

/// A whole site in which nothing is wrong.
struct WholeSite {
    WholeSite() {
        site.Files().Write("config/dir", "spool_dir:\t" + root + "/spool\nlog_dir:\t" + root +
                                             "/logs\n101\tDefault\t" + root + "/spool\n");
        site.Files().Write("config/ca-bundle.crt", kAuthority);
        site.Files().Write("web/quorbel.wsdl", "<soap:address location=\"http://here/soap\"/>");
        fs::create_directory(root + "/spool");
        fs::create_directory_symlink("../config", root + "/web/config");
        chmod((root + "/logs").c_str(), 0750);
    }

    ProgramResult Check(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"--site", root});
        return RunProgram({.program = QUORBEL_CHECK_PROGRAM, .arguments = more});
    }

    OperatorSite site{"[main]\n[SOAP]\nlevel=info\n"};
    const std::string root = site.Files().Path();
};

/// What is wrong; the room on the disk of this machine does not count.
std::string Wrong(const ProgramResult& result) {
    std::string wrong;
    for (std::size_t at = 0, end = 0; (end = result.output.find('\n', at)) != std::string::npos;
         at = end + 1) {
        const std::string line = result.output.substr(at, end - at);
        if (line.starts_with("OK ") || line.find("room for") != std::string::npos) continue;
        wrong += line + "\n";
    }
    return wrong;
}

}  // namespace

TEST(SiteCheck, FindsNothingWrongWithAWholeSite) {
    const WholeSite whole;
    const std::string before = whole.site.Listing();
    const LoopbackServer server;
    const auto result = whole.Check({server.Url()});
    EXPECT_EQ(Wrong(result), "") << result.errors;
    for (const char* line :
         {"OK logs: ", "OK spool: ", "OK log of SOAP: writes to ", "holds 1 authorities\n",
          "OK web/config: ", "clients are told http://here/soap\n", "takes connections\n"}) {
        EXPECT_THAT(result.output, HasSubstr(line));
    }
    EXPECT_EQ(server.Posts().size(), 0U);
    EXPECT_EQ(whole.site.Listing(), before);
}

TEST(SiteCheck, TellsTheWorstFirst) {
    const struct {
        std::function<void(const std::string& root)> damage;
        int status;
        const char* text;
    } cases[] = {
        {[](auto root) { fs::remove(root + "/config/dir"); }, 2, "CRITICAL dir: "},
        {[](auto root) { fs::remove_all(root + "/logs"); }, 2, "CRITICAL logs: "},
        {[](auto root) { chmod((root + "/logs").c_str(), 0755); }, 1, "WARNING logs: "},
        {[](auto root) { fs::remove_all(root + "/spool"); }, 2, "CRITICAL spool: "},
        {[](auto root) { fs::create_directory(root + "/logs/soap_log.txt"); }, 2, "CRITICAL log of SOAP: "},
        {[](auto root) { fs::remove(root + "/config/cvlogs.ini"); }, 2, "CRITICAL cvlogs.ini: "},
        {[](auto root) { fs::remove(root + "/web/config"); }, 2, "CRITICAL web/config: "},
        {[](auto root) { fs::remove(root + "/web/quorbel.wsdl"); }, 1, "WARNING description: "},
        {[](auto root) { fs::remove(root + "/config/ca-bundle.crt"); }, 1, "posts over https fail"},
        {[](auto root) { std::ofstream(root + "/config/servers") << "no address\n"; }, 2,
         "CRITICAL servers: "},
        {[](auto root) { fs::create_symlink("nowhere", root + "/config/servers"); }, 2, "CRITICAL servers: "},
        {[](auto root) { fs::resize_file(root + "/config/ca-bundle.crt", 0); }, 1, "holds 0 authorities"},
    };
    for (const auto& c : cases) {
        const WholeSite whole;
        c.damage(whole.root);
        const auto result = whole.Check();
        EXPECT_EQ(result.exitStatus, c.status) << c.text << result.output;
        EXPECT_THAT(Wrong(result), HasSubstr(c.text));
        EXPECT_THAT(result.output, testing::StartsWith(c.status == 2 ? "CRITICAL" : "WARNING"));
    }
}

TEST(SiteCheck, TellsOfServersThatCannotBeReached) {
    const WholeSite whole;
    const LoopbackServer server;
    std::string https = server.Url();
    https.replace(0, 4, "https");
    const auto result = whole.Check({"--json", DeadUrl(), https});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_THAT(result.output, HasSubstr("{\"state\":\"CRITICAL\",\"point\":\"server\",\"text\":\"" +
                                         DeadUrl() + ": Socket Connect Failed: Connection refused"));
    EXPECT_THAT(result.output, HasSubstr(https + ": ")) << "no handshake";
    whole.site.Files().Write("config/servers", "http://pager.example\n");
    EXPECT_THAT(whole.Check({server.Url()}).output,
                HasSubstr(server.Url() + " is not one of config/servers"));
}

TEST(SiteCheck, TellsWhoHoldsALockForLong) {
    const WholeSite whole;
    const std::string other = whole.root + "/other";
    fs::create_directory(other);
    whole.site.Files().Write("config/cvlogs.ini",
                             "[main]\n[SOAP]\n[Jobs]\nfilePath=" + other + "/jobs.txt\n");
    ASSERT_EQ(mkfifo((whole.root + "/logs/pipe.lock").c_str(), 0600), 0);
    const LockHolder holder(whole.root + "/logs/soap_log.txt.lock");
    const LockHolder otherHolder(other + "/jobs.txt.lock");
    const std::string wrong = Wrong(whole.Check());
    for (const char* lock : {"/logs/soap_log.txt.lock", "/other/jobs.txt.lock"}) {
        const std::string told = whole.root + lock + " has been held for more than a second by process ";
        EXPECT_EQ(wrong.find(told), wrong.rfind(told));
        EXPECT_THAT(wrong, HasSubstr(told));
    }
}

TEST(SiteCheck, TellsOfExpiredAuthorities) {
    const WholeSite whole;
    whole.site.Files().Write("config/ca-bundle.crt", kAuthority + kExpired);
    EXPECT_THAT(Wrong(whole.Check()), HasSubstr("holds 2 authorities, 1 expired: /CN=Old"));
}

TEST(SiteCheck, TellsMonitoringThatItCouldNotLook) {
    const WholeSite whole;
    EXPECT_EQ(whole.Check({"--sight"}).exitStatus, 3);
}
