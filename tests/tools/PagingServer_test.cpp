#include "tools/paging-standin/PagingServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "tests/support/TempDir.h"

using namespace quorbel;

namespace standin {
namespace {

constexpr char kForm[] = "application/x-www-form-urlencoded";

/// A server on a free port and what it prints.
struct Served {
    explicit Served(SimulatedFailure failure = {}) : server(std::move(failure), log) {
        port = server.Start(0);
    }

    httplib::Result Post(const std::string& body) const {
        return httplib::Client("127.0.0.1", port).Post("/cgi/cmd", body, kForm);
    }

    std::ostringstream log;
    PagingServer server;
    int port = 0;
};

}  // namespace

TEST(StandinServer, AnswersAndPrintsACommand) {
    const Served served;
    const auto answer = served.Post("cmd=Cli&subcmd=addgroup&groupname=Ops%2d1&description=a%0ab");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, "OK Ops-1 added\r\n");
    EXPECT_THAT(served.log.str(),
                testing::EndsWith("POST /cgi/cmd\n  cmd=Cli\n  subcmd=addgroup\n  groupname=Ops-1\n"
                                  "  description=a\\nb\n  -> OK Ops-1 added\n"));
}

TEST(StandinServer, TakesALongMessage) {
    const Served served;
    const std::string message(300'000, 'm');
    const auto answer = served.Post("cmd=Cli&modid=cli&name=oncall&message=" + message);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->body, "OK job 100001.1 queued for oncall\r\n");
    EXPECT_THAT(served.log.str(), testing::HasSubstr("message=" + message));
}

TEST(StandinServer, TakesAnAttachment) {
    const Served served;
    httplib::Client client("127.0.0.1", served.port);
    const auto answer = client.Post("/any", httplib::MultipartFormDataItems{
                                                {"cmd", "Cli", "", ""},
                                                {"name", "on call&off", "", ""},
                                                {"attach", "four", "report.txt", "text/plain"},
                                            });
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->body, "OK job 100001.1 queued for on call&off\r\n");
    EXPECT_THAT(served.log.str(), testing::HasSubstr("  attach=@report.txt (4 bytes)\n"));
}

TEST(StandinServer, FailsAsAsked) {
    const Served canned({.status = 500, .reply = "50%% done\r\nitem"});
    const auto failed = canned.Post("cmd=Cli");
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->status, 500);
    EXPECT_EQ(failed->body, "50%% done\r\nitem");

    const Served cutting({.reply = "half", .cut = true});
    const auto cut =
        httplib::Client("127.0.0.1", cutting.port).Post("/", httplib::Headers{}, "cmd=Cli", kForm);
    EXPECT_EQ(cut.error(), httplib::Error::Read) << "the client must notice that bytes are missing";
}

TEST(StandinServer, EndsDuringADelay) {
    const TempDir dir;
    std::ofstream log(dir / "log");
    auto server = std::make_unique<PagingServer>(SimulatedFailure{.delay = std::chrono::minutes(10)}, log);
    std::thread client([port = server->Start(0)] {
        httplib::Client("127.0.0.1", port).Post("/", "cmd=Cli&name=oncall", kForm);
    });
    while (ReadFile(dir / "log").find("POST") == std::string::npos) std::this_thread::yield();
    server.reset();
    client.join();
}

TEST(StandinServer, RefusesATakenPort) {
    const Served first;
    std::ostringstream log;
    PagingServer second({}, log);
    EXPECT_THROW(second.Start(first.port), std::runtime_error);
}

}  // namespace standin
