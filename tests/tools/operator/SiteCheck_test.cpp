#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/support/LoopbackServer.h"
#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr char kAuthority[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBdzCCAR2gAwIBAgIUPopQsz4d5PmR3v/HYtoHDrzStOswCgYIKoZIzj0EAwIw\n"
    "EDEOMAwGA1UEAwwFUGxhbnQwIBcNMjYxMTIxMjAyNjE2WhgPMjEyNjEwMjgyMDI2\n"
    "MTZaMBAxDjAMBgNVBAMMBVBsYW50MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAE\n"
    "oYQCF8zIo5LohONVa1q88OKF3KAqelXmIvvvSeTZJ+bMF2o9dawOo3YZboCgJOad\n"
    "iRgaCPjD+PD767hxh4KStqNTMFEwHQYDVR0OBBYEFL79efaSGqSyz+5b1YnHrQ3j\n"
    "7DptMB8GA1UdIwQYMBaAFL79efaSGqSyz+5b1YnHrQ3j7DptMA8GA1UdEwEB/wQF\n"
    "MAMBAf8wCgYIKoZIzj0EAwIDSAAwRQIhAMOzrWILBKLT/zVbFdsQgBpyMMCf72Su\n"
    "ZKcWumqeTpL0AiB2k3hbp84En2UMd23dJ+I5b5nai3Zvcsn9DNr2pFOwCg==\n"
    "-----END CERTIFICATE-----\n";
// Its time was over in 2018.
constexpr char kExpired[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBBDCBqgIBATAKBggqhkjOPQQDAjAOMQwwCgYDVQQDDANPbGQwHhcNMTAwMTAx\n"
    "MDAwMDAwWhcNMTgwMTAxMDAwMDAwWjAOMQwwCgYDVQQDDANPbGQwWTATBgcqhkjO\n"
    "PQIBBggqhkjOPQMBBwNCAAShhAIXzMijkuiE41VrWrzw4oXcoCp6VeYi++9J5Nkn\n"
    "5swXaj11rA6jdhlugKAk5p2JGBoI+MP48PvruHGHgpK2MAoGCCqGSM49BAMCA0kA\n"
    "MEYCIQD5T2iW8n5bgNvdILA0kswrkY1/88pmF3yrnKUvti2/qQIhAMOUXEC6PxkB\n"
    "sGDrbJqKE+cyrkODd+8PP++X1jctTpL7\n"
    "-----END CERTIFICATE-----\n";

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

/// Another process that holds the lock on a file.
class LockHolder {
public:
    explicit LockHolder(const std::string& path) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        pid_ = fork();
        if (pid_ == 0) {
            struct flock lock {};
            lock.l_type = F_WRLCK;
            const int file = open(path.c_str(), O_RDWR | O_CREAT, 0664);
            if (fcntl(file, F_SETLK, &lock) != 0 || write(ready[1], "r", 1) != 1) _exit(1);
            pause();
        }
        char got = 0;
        EXPECT_EQ(read(ready[0], &got, 1), 1);
        close(ready[0]);
        close(ready[1]);
    }
    ~LockHolder() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }

private:
    pid_t pid_ = 0;
};

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
    const LockHolder holder(whole.root + "/logs/soap_log.txt.lock");
    EXPECT_THAT(Wrong(whole.Check()), HasSubstr("held for more than a second by process "));
}

TEST(SiteCheck, TellsOfExpiredAuthorities) {
    const WholeSite whole;
    whole.site.Files().Write("config/ca-bundle.crt", std::string(kAuthority) + kExpired);
    EXPECT_THAT(Wrong(whole.Check()), HasSubstr("holds 2 authorities, 1 expired: /CN=Old"));
}

TEST(SiteCheck, TellsMonitoringThatItCouldNotLook) {
    const WholeSite whole;
    EXPECT_EQ(whole.Check({"--sight"}).exitStatus, 3);
}
