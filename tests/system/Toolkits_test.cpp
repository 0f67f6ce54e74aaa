// Requests as real client toolkits sent them: each must reach the server as the command that the file
// "commands" tells (a line per request: file name, blank, body).

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"
#include "tests/system/ResidentProgram.h"

using namespace quorbel;

namespace {

struct Recorded {
    std::string file;
    std::string command;
};

std::vector<Recorded> RecordedRequests() {
    std::vector<Recorded> requests;
    std::ifstream lines(REQUESTS_DIR "/commands");
    for (Recorded r; lines >> r.file >> r.command;) requests.push_back(r);
    return requests;
}

/// The request with this test's server in place of the one that its client named.
std::string Redirected(std::string request, const std::string& url) {
    for (const char* address :
         {"http://pager1.example/cgi/cmd", "http://pager1.example/cmd?a=1&amp;b=2", "http://p/x"}) {
        request = ReplaceAll(request, address, url);
    }
    return ReplaceAll(request, "http://pager2.example/cgi/cmd", DeadUrl());
}

std::string NameOfRecording(const testing::TestParamInfo<Recorded>& info) {
    const std::string name = info.param.file.substr(0, info.param.file.find('.'));
    return ReplaceAll(name, "-", "_");
}

class ToolkitsTest : public testing::TestWithParam<Recorded> {};

}  // namespace

TEST_P(ToolkitsTest, ReachesTheServer) {
    LoopbackServer server({.body = "OK\r\nitem\r\n"});
    const FrontEnd frontEnd;
    const std::string request = ReadFile(REQUESTS_DIR "/" + GetParam().file);
    ASSERT_FALSE(request.empty());
    const ProgramResult result = frontEnd.Serve(Redirected(request, server.Url()));
    EXPECT_EQ(result.exitStatus, 0);
    ExpectWellFormed(BodyOf(result));
    ASSERT_EQ(server.Bodies().size(), 1u) << result.output;
    EXPECT_EQ(server.Bodies()[0], GetParam().command);
}

INSTANTIATE_TEST_SUITE_P(System, ToolkitsTest, testing::ValuesIn(RecordedRequests()), NameOfRecording);

TEST(Resident, OneWorkerServesTheRequestsOfAllToolkits) {
    const LoopbackServer server({.body = "OK\r\nitem\r\n"});
    const FrontEnd frontEnd;
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--spare=1"});
    std::vector<std::string> commands;
    for (const Recorded& recorded : RecordedRequests()) {
        const std::string request = Redirected(ReadFile(REQUESTS_DIR "/" + recorded.file), server.Url());
        EXPECT_EQ(resident.Ask(request), BodyOf(frontEnd.Serve(request))) << recorded.file;
        commands.insert(commands.end(), 2, recorded.command);
    }
    EXPECT_EQ(server.Bodies(), commands);
}
