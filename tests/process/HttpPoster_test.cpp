#include "process/HttpPoster.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/LoopbackServer.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kCouldNotConnect = 7;

struct Posted {
    int code;
    std::string output;
};

Posted Post(CommandParameters command, const std::string& url, const std::string& url2 = {}) {
    std::vector<char> output(4096, 'x');
    const int code = PostCommand(output.data(), output.size(), command, url, url2, "");
    return {code, code == -1 ? "" : output.data()};
}

CommandParameters CommandWith(std::vector<std::string> lines) {
    CommandParameters command;
    command.lines = std::move(lines);
    command.count = command.lines.size();
    return command;
}

std::string Body(const std::vector<std::string>& lines) {
    return std::string(BuildFormBody(lines).Text());
}

}  // namespace

TEST(HttpPoster, PostsAPlainFormRequest) {
    LoopbackServer server({.body = "OK\r\n50%% done\r\n"});
    const auto posted = Post(CommandWith({"cmd=Cli", "name=p w"}), server.Url());
    EXPECT_EQ(posted.code, 0);
    EXPECT_EQ(posted.output, "OK\r\n50%% done\r\n");
    const auto posts = server.Posts();
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].body, "cmd=Cli&name=p%20w");
    EXPECT_EQ(posts[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(posts[0].userAgent, "CorvaneClient");
    EXPECT_EQ(posts[0].version, "HTTP/1.0");
    EXPECT_FALSE(posts[0].expects);
}

TEST(HttpPoster, TurnsBackslashesOfTheAddress) {
    LoopbackServer server;
    std::string url = server.Url() + "/x";
    for (char& c : url) c = c == '/' ? '\\' : c;
    EXPECT_EQ(Post(CommandWith({"a=1"}), url).code, 0);
    EXPECT_EQ(server.Posts().at(0).target, "/cmd/x");
}

TEST(HttpPoster, FailsOverOnAnyFailure) {
    LoopbackServer cut({.body = "partial", .missing = 100});
    LoopbackServer longLine({.location = std::string(150000, 'x')});
    LoopbackServer second({.body = "second"});
    for (const std::string& first :
         {DeadUrl(), cut.Url(), longLine.Url(), std::string("no address"), std::string("ftp://x/")}) {
        const auto posted = Post(CommandWith({"a=1"}), first, second.Url());
        EXPECT_EQ(posted.code, 0) << first;
        EXPECT_EQ(posted.output, "second") << first;
    }
    EXPECT_THAT(second.Bodies(), ElementsAre("a=1", "a=1", "a=1", "a=1", "a=1"));
}

TEST(HttpPoster, TellsTheLastFailure) {
    LoopbackServer cut({.body = "half", .missing = 100});
    EXPECT_EQ(Post(CommandWith({"a=1"}), cut.Url(), DeadUrl()).output, "Couldn't connect to server");
    EXPECT_EQ(Post(CommandWith({"a=1"}), DeadUrl(), " ").output,
              "URL using bad/illegal format or missing URL");
    EXPECT_EQ(Post(CommandWith({"a=1"}), "").code, -1);
}

TEST(HttpPoster, RefusesAnAddressThatTheTransportDoesNotTake) {
    constexpr char kRefused[] = "A libcurl function was given a bad argument";
    std::string url = DeadUrl() + "/";
    url.resize(8000000, 'x');
    EXPECT_NE(Post(CommandWith({"a=1"}), url).output, kRefused);
    EXPECT_EQ(Post(CommandWith({"a=1"}), url + "x").output, kRefused);
}

TEST(HttpPoster, ReportsWhatHappenedAtEachAddress) {
    LoopbackServer good({.body = "fine", .status = 500});
    LoopbackServer cut({.body = "half", .missing = 100});
    const struct {
        std::string url, url2;
        int code;
        long status;
        long long received;
        bool isAnythingSent, isSecondary;
    } cases[] = {
        {good.Url(), good.Url(), 0, 500, 4, true, false},
        {DeadUrl(), "", kCouldNotConnect, 0, 0, false, false},
        {cut.Url(), "", 18, 200, 4, true, false},
        {DeadUrl(), cut.Url(), 18, 200, 4, true, true},
        {cut.Url(), "no address", 3, 0, 0, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url + " " + c.url2);
        CommandParameters command = CommandWith({"a=1"});
        PostReport report;
        TextBuffer reply;
        PostForReply(reply, 100, command, {c.url, c.url2, ""}, &report);
        const PostAttempt& last = report.Last();
        EXPECT_EQ(report.secondary.has_value(), c.isSecondary);
        EXPECT_EQ(last.code, c.code);
        EXPECT_EQ(last.httpStatus, c.status);
        EXPECT_EQ(last.received, c.received);
        EXPECT_EQ(last.isAnythingSent, c.isAnythingSent);
        EXPECT_LT(last.duration, std::chrono::minutes(1));
    }
}

TEST(HttpPoster, SendsOnlyTheCredentialsOfItsAddress) {
    LoopbackServer server;
    const std::string withUser = "http://user:pw@" + server.Url().substr(7);
    for (const std::string& url : {withUser, server.Url()})
        EXPECT_EQ(Post(CommandWith({"a=1"}), url).code, 0);
    const auto posts = server.Posts();
    EXPECT_EQ(posts.at(0).authorization, "Basic dXNlcjpwdw==");
    EXPECT_EQ(posts.at(1).authorization, "");
}

TEST(HttpPoster, WritesNothingIntoAnOutputWithoutRoom) {
    LoopbackServer server;
    CommandParameters command = CommandWith({"a=1"});
    char output = 'x';
    EXPECT_EQ(PostCommand(&output, 0, command, server.Url(), "", ""), 0);
    EXPECT_EQ(output, 'x');
    EXPECT_EQ(server.Bodies().size(), 1u);
}

TEST(HttpPoster, FollowsNoRedirects) {
    LoopbackServer other;
    LoopbackServer redirecting({.body = "moved", .status = 302, .location = other.Url()});
    EXPECT_EQ(Post(CommandWith({"a=1"}), redirecting.Url()).output, "moved");
    EXPECT_TRUE(other.Posts().empty());
}

TEST(HttpPoster, TakesAnErrorPageForAReplyAndCutsItToFit) {
    LoopbackServer server({.body = std::string(9000, 'y'), .status = 500});
    const auto posted = Post(CommandWith({"a=1"}), server.Url());
    EXPECT_EQ(posted.code, 0);
    EXPECT_EQ(posted.output, std::string(4095, 'y'));
}

TEST(HttpPoster, AttachesAFileAndShowsTheHeaders) {
    TempDir dir;
    LoopbackServer server({.body = "stored"});
    auto command = CommandWith({"cmd=Cli", "=x", "odd", "name=a=b"});
    command.attachment = dir.Write("fax.txt", "page one");
    const auto posted = Post(command, server.Url());
    EXPECT_EQ(posted.code, 0);
    EXPECT_THAT(posted.output, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(posted.output, HasSubstr("\r\n\r\nstored"));
    EXPECT_THAT(server.Bodies(), ElementsAre("cmd=Cli\nname=a=b\nattach:fax.txt=page one\n"));
    EXPECT_THAT(server.Posts()[0].contentType, StartsWith("multipart/form-data"));
}

TEST(HttpPoster, AttachmentThatCannotBeReadFailsThePost) {
    LoopbackServer server;
    auto command = CommandWith({"cmd=Cli"});
    command.attachment = "/nonexistent/file";
    EXPECT_NE(Post(command, server.Url()).code, 0);
    EXPECT_TRUE(server.Posts().empty());
}

TEST(HttpPoster, CollectsWhatTheTransportDelivers) {
    TextBuffer reply;
    char data[] = "ab\0cd";
    EXPECT_EQ(Curl_GetCallBackResult(data, 7, 5, &reply), 5u) << "the size of an item is always 1";
    EXPECT_EQ(Curl_GetCallBackResult(nullptr, 1, 5, &reply), 0u);
    EXPECT_EQ(Curl_GetCallBackResult(data, 1, 0, &reply), 0u);
    EXPECT_EQ(reply.Text(), "ab") << "a reply ends at its first zero byte";
    EXPECT_EQ(reply.length(), 5);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Curl_GetCallBackResult(data, 1, 2, nullptr), 2u);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ab");
}

TEST(HttpPoster, SurvivesABrokenPipeAndLeavesNoSignal) {
    LoopbackServer server({.body = std::string(1 << 20, 'x')});
    const std::vector<std::string> lines = {"a=1"};
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const int output = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    const auto before = std::signal(SIGPIPE, SIG_DFL);  // ends this process if it is not held back
    PostUrlencoded({server.Url(), ""}, lines, nullptr, "", nullptr);
    std::signal(SIGPIPE, before);
    dup2(output, STDOUT_FILENO);
    close(output);
    close(ends[1]);

    sigset_t signals;
    sigpending(&signals);
    EXPECT_EQ(sigismember(&signals, SIGPIPE), 0) << "a signal is left";
    pthread_sigmask(SIG_SETMASK, nullptr, &signals);
    EXPECT_EQ(sigismember(&signals, SIGPIPE), 0) << "the signal stays blocked";
    EXPECT_EQ(server.Posts().size(), 1u);
}

TEST(HttpPoster, RetriesARefusedConnectionInside) {
    LoopbackServer second({.body = "second"});
    const std::vector<std::string> lines = {"a=1"};
    TextBuffer reply;
    TextBuffer headers;
    EXPECT_EQ(PostUrlencoded({DeadUrl(), ""}, lines, &reply, second.Url(), &headers), 0);
    EXPECT_THAT(std::string(headers.Text()), StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_EQ(reply.Text(), "second");
    EXPECT_EQ(PostUrlencoded({"", ""}, lines, &reply, second.Url(), nullptr), 3)
        << "no address: nothing is tried";
}

TEST(HttpForm, CutsWhereTheServersFieldEnds) {
    EXPECT_EQ(EncodeFormText("abc", 4), "");
    EXPECT_EQ(EncodeFormText("abc", 5), "a");
    EXPECT_EQ(EncodeFormText(std::string(20000, ' '), 10000).size(), 3u * 3332);
}

TEST(HttpForm, JoinsLinesSplitAtTheFirstEquals) {
    EXPECT_EQ(Body({"a=1", "b=2"}), "a=1&b=2");
    EXPECT_EQ(Body({"a b=c=d"}), "a%20b=c%3dd");
    EXPECT_EQ(Body({"=abc"}), "abc");
    EXPECT_EQ(Body({"abc"}), "abc");
    EXPECT_EQ(Body({"a=1", "", "c=3"}), "a=1&c=3");
    EXPECT_EQ(Body({"", "c=3"}), "&c=3");
    EXPECT_EQ(Body({}), "");
}
