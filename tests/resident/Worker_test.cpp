#include "resident/Worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <thread>

#include "resident/ListeningSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/ScgiClient.h"
#include "tests/support/TempDir.h"

using namespace quorbel;
using testing::StartsWith;

namespace {

/// One worker in a process of its own, with a service that does what the request's id says and answers with the
/// process's number, the length of the body that arrived, and the body.
class WorkerTest : public testing::Test {
protected:
    /// As its parent does, with the signal that ends it blocked from the beginning.
    void Start(const WorkerSettings& settings) {
        sigset_t end, before;
        sigemptyset(&end);
        sigaddset(&end, SIGTERM);
        sigprocmask(SIG_BLOCK, &end, &before);
        child_ = StartChild([&] {
            Worker(socket_.Descriptor(), wake_, board_, 0, settings, {.serve = Serve, .forget = [] {}}).Run();
        });
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }
    ~WorkerTest() override { close(wake_); }

    std::string Ask(const std::string& body, const std::string& act = "") const {
        return AskByScgi(path_, body, {"REQUEST_METHOD=POST", "HTTP_X_REQUEST_ID=" + act});
    }
    std::string Answer(const std::string& body) const {
        return std::to_string(child_) + " " + std::to_string(body.size()) + " " + body;
    }
    bool Becomes(WorkerState state) const {
        return Eventually([&] { return board_.State(0) == state; });
    }

    const TempDir dir_;
    const std::string path_ = dir_ / "s";
    ListeningSocket socket_{path_};
    Scoreboard board_{1};
    const int wake_ = eventfd(0, EFD_NONBLOCK);
    pid_t child_ = 0;

private:
    static std::string ReadBody() {
        std::string body(std::strtoul(std::getenv("CONTENT_LENGTH"), nullptr, 10), '\0');
        std::size_t size = 0;
        for (ssize_t count = 1; size < body.size() && count > 0; size += count > 0 ? count : 0) {
            count = read(STDIN_FILENO, body.data() + size, body.size() - size);
        }
        return body.substr(0, size);
    }

    static bool Serve() {
        const std::string body = ReadBody();
        const std::string act = std::getenv("HTTP_X_REQUEST_ID");
        std::printf("%d %zu %s", getpid(), body.size(), body.c_str());
        if (act == "throw") throw std::runtime_error("told to");
        if (act == "flood") std::printf("%s", std::string(8 << 20, 'x').c_str());
        if (act == "linger") std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (act == "memory") {
            try {
                std::get_new_handler()();
            } catch (const std::bad_alloc&) {
            }
        }
        return act != "unfit";
    }
};

}  // namespace

TEST_F(WorkerTest, ServesItsNumberOfRequestsAndEnds) {
    Start({.requests = 3});
    for (const std::string body : {"one", "", "three"}) EXPECT_EQ(Ask(body), Answer(body));
    EXPECT_EQ(WaitForChild(child_), Child::Finished);
    EXPECT_EQ(board_.Begun(), 3u);
    EXPECT_STREQ(board_.Note(0).method, "POST");
}

TEST_F(WorkerTest, EndsAfterWhateverMayLeaveSomethingBehind) {
    for (const char* act : {"throw", "memory", "unfit"}) {
        Start({});
        EXPECT_THAT(Ask("body", act), StartsWith(std::to_string(child_))) << act;
        EXPECT_EQ(WaitForChild(child_), Child::Finished) << act;
    }
}

TEST_F(WorkerTest, WithoutASocketToWatchIsAFailureAndNoEnd) {
    child_ = StartChild([&] { Worker(-1, wake_, board_, 0, {}, {}).Run(); });
    EXPECT_EQ(WaitForChild(child_), Child::Threw);
}

TEST_F(WorkerTest, WhatOneClientDidNotTakeIsNotTheNextOnes) {
    Start({.requests = 3});
    {
        const ScgiClient vanishes(path_);
        vanishes.Send(ScgiHeaderText({"REQUEST_METHOD=POST", "HTTP_X_REQUEST_ID=flood"}, 6) + "secret");
    }
    {
        const ScgiClient halfClosed(path_);
        halfClosed.Send(ScgiHeaderText({"REQUEST_METHOD=POST", "HTTP_X_REQUEST_ID=linger"}, 6) + "sec");
        halfClosed.EndSending();
    }
    EXPECT_EQ(Ask("mine"), Answer("mine"));
    EXPECT_EQ(WaitForChild(child_), Child::Finished);
}

TEST_F(WorkerTest, PeersThatMisbehaveLeaveItFit) {
    constexpr std::chrono::milliseconds kShort{50};
    Start({.requests = 8, .headerTimeout = kShort, .pause = kShort});
    const std::string header = ScgiHeaderText({"REQUEST_METHOD=POST", "HTTP_X_REQUEST_ID="}, 6);
    ASSERT_TRUE(Becomes(WorkerState::Idle));
    const struct {
        const char* what;
        std::string bytes;
        std::string answer;
    } cases[] = {
        {"no SCGI", "GET / HTTP/1.0\r\n\r\n and more of it, so that something is left", ""},
        {"a header that stops", header.substr(0, 40), ""},
        {"nothing at all", "", ""},
        {"a body that stops", header + "sto", Answer("sto")},
    };
    for (const auto& c : cases) {
        const ScgiClient client(path_);
        client.Send(c.bytes);
        EXPECT_EQ(client.Receive(), c.answer) << c.what;
    }
    const ScgiClient slow(path_);
    std::size_t sent = 0;
    while (sent < header.size() && slow.Send(header.substr(sent++, 1))) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    EXPECT_LT(sent, header.size()) << "a byte at a time must not hold a worker for ever";
    EXPECT_EQ(slow.Receive(), "");
    EXPECT_EQ(Ask("fine"), Answer("fine"));
    kill(child_, SIGTERM);
    EXPECT_EQ(WaitForChild(child_), Child::Finished);
}

TEST_F(WorkerTest, AskedToEndItServesWhatItHasAndOneThatWaits) {
    Start({});
    const ScgiClient first(path_), second(path_), third(path_);
    const auto send = [](const ScgiClient& client, const char* act) {
        client.Send(ScgiHeaderText({"REQUEST_METHOD=POST", std::string("HTTP_X_REQUEST_ID=") + act}, 1) +
                    "x");
    };
    send(first, "linger");
    ASSERT_TRUE(Becomes(WorkerState::Serving));
    send(second, "");
    send(third, "");
    kill(child_, SIGTERM);
    EXPECT_EQ(first.Receive(), Answer("x"));
    EXPECT_EQ(second.Receive(), Answer("x"));
    EXPECT_EQ(WaitForChild(child_), Child::Finished);

    board_.SetDraining();
    const ScgiClient fourth(path_);
    send(fourth, "");
    Start({});
    kill(child_, SIGTERM);
    EXPECT_EQ(fourth.Receive(), Answer("x"));
    EXPECT_EQ(third.Receive(), Answer("x")) << "what is in the queue is served before the end";
    EXPECT_EQ(WaitForChild(child_), Child::Finished);
}

TEST_F(WorkerTest, WakesTheParentWhenFewAreIdle) {
    Start({.requests = 1, .spare = 1});
    Ask("x");
    EXPECT_EQ(WaitForChild(child_), Child::Finished);
    std::uint64_t count = 0;
    EXPECT_EQ(read(wake_, &count, sizeof count), static_cast<ssize_t>(sizeof count));
}
