#include "CVioSocket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <thread>

#include "CVException.h"
#include "CVconThread.h"
#include "NoCancellation.h"

using namespace quorbel;

using namespace std::chrono_literals;

namespace {

#ifdef __SANITIZE_THREAD__  // does not know the threads of the C library that ask the name service
constexpr char kHostName[] = "127.0.0.1";
#else
constexpr char kHostName[] = "localhost";
#endif

constexpr CVioSocket::Milliseconds kEnough = 20s;
constexpr CVioSocket::Milliseconds kShort = 30ms;

/// Message, peer and system message of what `action` throws.
std::string SocketFailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const CVioException& failure) {
        EXPECT_EQ(failure.GetFile(), "CVioSocket");
        return failure.GetMessage() + "|" + failure.GetIoPath() + "|" + failure.GetSystemMessage();
    }
    return "nothing";
}

std::string Text(int code) {
    return std::strerror(code);
}

/// Two ends of one connection.
struct Pair {
    CVioListener listener{"127.0.0.1", "0"};
    std::vector<std::string> traced;
    CVioSocket client{[this](const char* format, std::string_view bytes) {
        traced.push_back(format + std::string("|") + std::string(bytes));
    }};
    std::unique_ptr<CVioSocket> server;

    Pair() {
        client.Connect("127.0.0.1", std::to_string(listener.GetPort()), kEnough);
        server = listener.Accept(kEnough);
    }
};

}  // namespace

TEST(CVioSocket, CarriesAndTracesBytesBothWays) {
    Pair pair;
    const std::string_view question("a\0b\n", 4);
    pair.client.Write(question, kEnough);
    char buffer[16];
    ASSERT_EQ(pair.server->Read(buffer, sizeof buffer, kEnough), 4U);
    EXPECT_EQ(std::string_view(buffer, 4), question);
    pair.server->Write("answer", kEnough);
    pair.server->Close();
    EXPECT_EQ(pair.client.Read(buffer, 4, kEnough), 4U);
    EXPECT_EQ(pair.client.Read(buffer, sizeof buffer, kEnough), 2U);
    EXPECT_EQ(pair.client.Read(buffer, sizeof buffer, kEnough), 0U) << "the peer has ended";
    EXPECT_THAT(pair.traced,
                testing::ElementsAre("<= %s|" + std::string(question), "=> %s|answ", "=> %s|er"));
}

TEST(CVioSocket, WritesMoreThanThePeerTakesAtOnce) {
    Pair pair;
    std::string much;
    much.resize(20'000'000, 'm');
    std::size_t received = 0;
    std::thread reader([&] {
        std::string buffer(1 << 20, '\0');
        while (const std::size_t count = pair.server->Read(buffer.data(), buffer.size(), kEnough))
            received += count;
    });
    pair.client.Write(much, kEnough);
    pair.client.Close();
    reader.join();
    EXPECT_EQ(received, much.size());
}

TEST(CVioSocket, SpeaksBothKindsOfAddresses) {
    const std::unique_ptr<CVioListener> every = std::make_unique<CVioListener>("", "0");
    for (const char* host : {"127.0.0.1", "::1", kHostName}) {
        CVioSocket client;
        try {
            client.Connect(host, std::to_string(every->GetPort()), kEnough);
        } catch (const CVioException& failure) {
            if (std::string_view(host) == "::1") continue;  // a machine without IPv6
            FAIL() << failure.ToString();
        }
        EXPECT_TRUE(every->Accept(kEnough)->IsOpen()) << host;
    }
}

TEST(CVioSocket, NamesThePeerOfAFailure) {
    CVioSocket closed;
    char c;
    EXPECT_EQ(SocketFailureOf([&] { closed.Read(&c, 1, kShort); }), "Socket Read Failed||" + Text(EBADF));
    EXPECT_EQ(SocketFailureOf([&] { closed.Write("x", kShort); }), "Socket Write Failed||" + Text(EBADF));
    EXPECT_EQ(SocketFailureOf([&] { closed.Connect("127.0.0.1", "1", kEnough); }),
              "Socket Connect Failed|127.0.0.1:1|" + Text(ECONNREFUSED));
#ifndef __SANITIZE_THREAD__
    EXPECT_THAT(SocketFailureOf([&] { closed.Connect("no such host", "1", kEnough); }),
                testing::StartsWith("Socket Connect Failed|no such host:1|"));
#endif
    Pair pair;
    EXPECT_EQ(SocketFailureOf([&] { CVioListener("127.0.0.1", std::to_string(pair.listener.GetPort())); }),
              "Socket Listen Failed|" + pair.listener.GetAddress() + "|" + Text(EADDRINUSE));
    EXPECT_EQ(SocketFailureOf([&] { pair.client.Connect("127.0.0.1", "1", kEnough); }),
              "Socket Was Already Open|" + pair.listener.GetAddress() + "|" + Text(EISCONN));
    pair.server.reset();
    EXPECT_THAT(SocketFailureOf([&] {
                    for (;;) pair.client.Write("x", kEnough);  // and no signal ends the process
                }),
                testing::StartsWith("Socket Write Failed|" + pair.listener.GetAddress()));
}

TEST(CVioSocket, GivesUpWhenItsTimeIsOver) {
    Pair pair;
    char c;
    std::string much;
    much.resize(50'000'000, 'm');
    const std::string timedOut = "|" + pair.listener.GetAddress() + "|" + Text(ETIMEDOUT);
    EXPECT_EQ(SocketFailureOf([&] { pair.client.Read(&c, 1, kShort); }), "Socket Read Failed" + timedOut);
    EXPECT_EQ(SocketFailureOf([&] { pair.client.Write(much, kShort); }), "Socket Write Failed" + timedOut);
    EXPECT_EQ(SocketFailureOf([&] { pair.listener.Accept(kShort); }), "Socket Accept Failed" + timedOut);
}

TEST(CVioSocket, EndsItsWaitWhenItsThreadIsKilled) {
    struct Body : CVconDelegate {
        Pair pair;
        std::string thrown;
        void DoWork(pthread_t) override {
            const NoCancellation asInALibrary;
            char c;
            thrown = SocketFailureOf([&] { pair.client.Read(&c, 1, 1h); });
        }
    } body;
    CVconThread thread(&body);
    thread.Create();
    thread.Kill();
    ASSERT_TRUE(thread.WaitForEnd(20s));
    EXPECT_EQ(body.thrown, "Socket Read Failed|" + body.pair.listener.GetAddress() + "|" + Text(EINTR));
}
