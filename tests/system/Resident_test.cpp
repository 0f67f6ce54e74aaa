// What the resident program does beyond one request and its answer: what it keeps apart, what it survives, and what it
// does when it is told to. One worker or many, the real program and a real server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "resident/ListeningSocket.h"
#include "tests/support/Eventually.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ScgiClient.h"
#include "tests/system/FrontEnd.h"
#include "tests/system/ResidentProgram.h"
#include "tools/paging-standin/HttpServer.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

namespace {

/// An AddUser whose every value is a secret that ends in the number.
std::string SecretRequest(const std::string& url, const std::string& number) {
    const auto element = [&](const std::string& name) {
        return "<" + name + ">" + name + "-secret" + number + "</" + name + ">";
    };
    std::string fields;
    for (const char* name :
         {"szAdminName", "szAdminPassword", "szUserName", "szPassword", "szDescription", "szUserGroup",
          "szEmail", "szLinkPassword", "szLinkUserName", "szNTPassword", "szNTUserName"}) {
        fields += element(name);
    }
    return "<Envelope><Body><AddUser><szURL>" + url + "?secret" + number + "</szURL>" + fields + "<szURL2>" +
           url + "?second-secret" + number + "</szURL2></AddUser></Body></Envelope>";
}

std::vector<std::string> WithId(const std::string& id) {
    return {"REQUEST_METHOD=POST", "REMOTE_ADDR=192.0.2.7", "REMOTE_USER=user-secret" + id,
            "HTTP_X_REQUEST_ID=" + id};
}

bool IsWhole(const std::string& answer) {
    return answer.find("Envelope>") != answer.npos && answer.find("Result>") != answer.npos &&
           answer.rfind("</soap:Envelope>") + 16 == answer.size();
}

long Occurrences(const std::string& text, const std::string& what) {
    long count = 0;
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
    return count;
}

/// Clients that send one request after another until they are stopped; each must be answered.
class Load {
public:
    Load(std::string socket, std::string url) : socket_(std::move(socket)), url_(std::move(url)) {
        for (int i = 0; i < 4; ++i) clients_.emplace_back([this] { Send(); });
    }
    /// The number of requests that were answered whole; fails the test when there is another one.
    int Stop() {
        done_ = true;
        for (auto& client : clients_) client.join();
        EXPECT_EQ(lost_, 0);
        return answered_;
    }
    bool Reaches(int more) const {
        return Eventually([&, target = answered_ + more] { return answered_ >= target; });
    }

private:
    void Send() {
        while (!done_) ++(IsWhole(AskByScgi(socket_, MessageTo(url_))) ? answered_ : lost_);
    }

    const std::string socket_, url_;
    std::atomic<bool> done_{false};
    std::atomic<int> answered_{0}, lost_{0};
    std::vector<std::thread> clients_;
};

/// A paging server that answers when it is told to, and a client that waits for it.
class SlowRequest {
public:
    explicit SlowRequest(const std::string& socket) : client_(socket) {
        const std::string url = "http://127.0.0.1:" + std::to_string(server_.Bind(0)) + "/";
        server_.Start();
        const std::string request = MessageTo(url);
        client_.Send(ScgiHeaderText(WithId("slow"), request.size()) + request);
        EXPECT_TRUE(Eventually([&] { return arrived_.load(); }));
    }
    std::string Answer() {
        go_ = true;
        return client_.Receive();
    }

private:
    std::atomic<bool> arrived_{false}, go_{false};
    HttpServer server_{[this](const HttpPost&) {
        arrived_ = true;
        Eventually([this] { return go_.load(); });
        return HttpReply{};
    }};
    const ScgiClient client_;
};

bool HasOthersThan(const std::vector<pid_t>& before, const ResidentProgram& resident) {
    const auto now = resident.Workers();
    return std::none_of(before.begin(), before.end(),
                        [&](pid_t pid) { return std::find(now.begin(), now.end(), pid) != now.end(); });
}

int ExitStatus(const std::vector<std::string>& arguments, std::string& errors) {
    const ProgramResult result = RunProgram({.program = QUORBEL_SOAPD, .arguments = arguments});
    errors = result.errors;
    return result.exitStatus;
}

}  // namespace

TEST(Resident, NothingOfARequestReachesTheNextOne) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--spare=1"});
    const std::string followers[] = {
        MessageTo(server.Url()),
        SecretRequest(server.Url(), "2"),
        SecretRequest(DeadUrl(), "2"),
        "<Envelope><QueryMessage><szURL>" + server.Url() + "</szURL></QueryMessage></Envelope>",
        "<Envelope><SendStdMessage>",
        "<Envelope><AddUser/></Envelope>",
        "no XML",
        ""};
    for (const auto& follower : followers) {
        resident.Ask(SecretRequest(server.Url(), "1"), WithId("1"));
        const std::size_t posted = server.Posts().size();
        const std::size_t logged = frontEnd.Log().size();
        const std::string answer = resident.Ask(follower);
        EXPECT_THAT(answer, Not(HasSubstr("secret1"))) << follower;
        EXPECT_THAT(frontEnd.Log().substr(logged), Not(HasSubstr("secret1"))) << follower;
        const auto posts = server.Posts();
        for (std::size_t i = posted; i < posts.size(); ++i) {
            EXPECT_THAT(posts[i].target + posts[i].body, Not(HasSubstr("secret1"))) << follower;
        }
    }
    EXPECT_EQ(resident.Workers().size(), 1u);
    EXPECT_THAT(frontEnd.Log(), HasSubstr("secret1")) << "nothing was looked for in the right place";
}

TEST(Resident, ConfigurationCountsFromTheNextRequestOn) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));  // files that old are read once
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--spare=1"});
    const auto logIs = [&](const std::string& name, const std::string& level) {
        frontEnd.Site().Write("config/cvlogs.ini", "[SOAP]\nwriter=file\nlevel=" + level + "\nfilePath=" +
                                                       frontEnd.Site() / name + "\nautoAppend=1\n");
    };
    const std::string request = MessageTo(server.Url());
    resident.Ask(request);
    EXPECT_THAT(frontEnd.Log(), HasSubstr("REQUEST_METHOD=POST"));
    logIs("logs/other.txt", "trace");
    resident.Ask(request);
    EXPECT_THAT(ReadFile(frontEnd.Site() / "logs/other.txt"), HasSubstr("REQUEST_METHOD=POST"));
    logIs("logs/quiet.txt", "error");
    resident.Ask(request);
    EXPECT_EQ(ReadFile(frontEnd.Site() / "logs/quiet.txt"), "");
    fs::rename(frontEnd.Site() / "config/dir", frontEnd.Site() / "config/away");
    EXPECT_EQ(resident.Ask(request), FaultDocument("2301 Invalid log directory"));
    fs::rename(frontEnd.Site() / "config/away", frontEnd.Site() / "config/dir");
    frontEnd.Site().Write("config/cvlogs.ini", "[SOAP]\nwriter=paper\n");
    EXPECT_EQ(resident.Ask(request), FaultDocument("2301 Invalid log directory"));
    logIs("logs/again.txt", "trace");
    EXPECT_TRUE(IsWhole(resident.Ask(request)));
    EXPECT_THAT(ReadFile(frontEnd.Site() / "logs/again.txt"), HasSubstr("REQUEST_METHOD=POST"));
}

TEST(Resident, LargeRequestsAndRepliesAreServedWhole) {
    const LoopbackServer server({.body = "OK\r\n" + std::string(100 << 20, 'r')});
    const LoopbackServer small;
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--spare=1"});
    const std::string large =
        MessageTo(small.Url(), "<szMessage>" + std::string(16 << 20, 'm') + "</szMessage>");
    EXPECT_TRUE(IsWhole(resident.Ask(large)));
    const std::string answer = resident.Ask(MessageTo(server.Url()));
    EXPECT_GT(answer.size(), std::size_t{100 << 20}) << "cut before the limit";
    EXPECT_TRUE(IsWhole(answer));
    EXPECT_TRUE(IsWhole(resident.Ask(MessageTo(small.Url()))));
}

TEST(Resident, AThousandConnectionsAtOnceAreServedInTurn) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=4", "--spare=2"});
    std::vector<ScgiClient> clients;
    clients.reserve(1000);
    for (int i = 0; i < 1000; ++i) clients.emplace_back(resident.Socket());
    for (int i = 0; i < 1000; ++i) {
        const std::string request = MessageTo(server.Url() + "?" + std::to_string(i));
        ASSERT_TRUE(clients[i].Send(ScgiHeaderText({"REQUEST_METHOD=POST"}, request.size()) + request));
    }
    for (const auto& client : clients) EXPECT_TRUE(IsWhole(client.Receive()));
    EXPECT_EQ(server.Posts().size(), 1000u);
    EXPECT_LE(resident.Workers().size(), 4u);
}

TEST(Resident, AKilledWorkerCostsTheRequestInItAndNoOther) {
    constexpr int kClients = 8;
    constexpr int kRequestsEach = 250;
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=32", "--spare=8"});
    ASSERT_TRUE(Eventually([&] { return resident.Workers().size() >= 8; }));
    const std::size_t descriptors = resident.Descriptors();

    std::atomic<bool> done{false};
    std::thread killer([&] {
        std::minstd_rand random(7);
        for (int round = 0; !done; ++round) {
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
            const auto workers = resident.Workers();
            if (!workers.empty())
                kill(workers[random() % workers.size()], round % 2 == 0 ? SIGKILL : SIGSEGV);
        }
    });
    std::mutex mutex;
    std::set<std::string> failed;
    std::vector<std::thread> clients;
    clients.reserve(kClients);
    for (int client = 0; client < kClients; ++client) {
        clients.emplace_back([&, client] {
            for (int i = 0; i < kRequestsEach; ++i) {
                const std::string id = std::to_string(client * kRequestsEach + i);
                const std::string answer =
                    AskByScgi(resident.Socket(), MessageTo(server.Url() + "?" + id), WithId(id));
                const std::lock_guard guard(mutex);
                if (!IsWhole(answer)) failed.insert(id);
            }
        });
    }
    for (auto& client : clients) client.join();
    done = true;
    killer.join();

    std::set<std::string> targets;
    for (const auto& post : server.Posts())
        EXPECT_TRUE(targets.insert(post.target).second) << "posted twice: " << post.target;
    EXPECT_GE(targets.size() + failed.size(), std::size_t{kClients} * kRequestsEach);
    EXPECT_GT(failed.size(), 0u) << "no worker was killed in a request";
    const std::string messages = resident.Messages();
    // A worker may die between taking a connection and reading whose it is.
    const auto isTold = [&](const std::string& id) {
        return messages.find(", id " + id + ", ") != messages.npos;
    };
    const auto untold =
        std::count_if(failed.begin(), failed.end(), [&](const auto& id) { return !isTold(id); });
    EXPECT_LE(untold, Occurrences(messages, "was ended by") - Occurrences(messages, ", id "));
    EXPECT_TRUE(Eventually([&] { return resident.Workers().size() >= 8 && !resident.HasZombie(); }));
    EXPECT_EQ(resident.Descriptors(), descriptors);
    EXPECT_THAT(messages, Not(HasSubstr("secret"))) << "what a client sent";
}

TEST(Resident, RestartUnderLoadLosesNothingWhereTheSocketStays) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const ListeningSocket socket(frontEnd.Site() / "s");
    Load load(frontEnd.Site() / "s", server.Url());
    for (int round = 0; round < 3; ++round) {
        ResidentProgram resident(frontEnd.Site().Path(), {"--spare=2"}, socket.Descriptor());
        EXPECT_TRUE(load.Reaches(50));
        EXPECT_EQ(resident.Stop(), 0);
    }
    const ResidentProgram last(frontEnd.Site().Path(), {"--spare=2"}, socket.Descriptor());
    const auto answered = static_cast<std::size_t>(load.Stop());
    EXPECT_EQ(server.Posts().size(), answered) << "posted twice";
}

TEST(Resident, HangUpReplacesEveryWorkerAndLosesNothing) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const ResidentProgram resident(frontEnd.Site().Path(), {"--spare=3"});
    Load load(resident.Socket(), server.Url());
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(load.Reaches(50));
        const auto before = resident.Workers();
        kill(resident.Pid(), SIGHUP);
        EXPECT_TRUE(Eventually([&] { return HasOthersThan(before, resident); }));
    }
    const auto answered = static_cast<std::size_t>(load.Stop());
    EXPECT_EQ(server.Posts().size(), answered) << "posted twice";
}

TEST(Resident, ReloadTakesUpTheInstalledProgramAndWaitsForNoRequest) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    const std::string program = frontEnd.Site() / "quorbel-soapd", path = frontEnd.Site() / "s";
    fs::copy_file(QUORBEL_SOAPD, program);
    const ListeningSocket socket(path);
    ResidentProgram resident(frontEnd.Site().Path(), {"--spare=2"}, socket.Descriptor(), program);
    SlowRequest slow(path);
    const auto before = resident.Workers();
    const std::size_t descriptors = resident.Descriptors();
    fs::copy_file(QUORBEL_SOAPD, program + ".new");
    fs::rename(program + ".new", program);
    kill(resident.Pid(), SIGHUP);
    kill(resident.Pid(), SIGHUP);
    EXPECT_TRUE(Eventually([&] {
        std::error_code none;
        return fs::read_symlink("/proc/" + std::to_string(resident.Pid()) + "/exe", none) == program;
    }));
    EXPECT_TRUE(IsWhole(AskByScgi(path, MessageTo(server.Url()), WithId("quick"))));
    EXPECT_TRUE(Eventually([&] { return resident.Descriptors() == descriptors; }));
    EXPECT_TRUE(IsWhole(slow.Answer()));
    EXPECT_TRUE(Eventually([&] { return HasOthersThan(before, resident) && !resident.HasZombie(); }));
    SlowRequest last(path);
    kill(resident.Pid(), SIGHUP);
    kill(resident.Pid(), SIGTERM);
    EXPECT_TRUE(Eventually([&] { return resident.Workers().size() == 1; })) << "the idle ones end at once";
    EXPECT_TRUE(IsWhole(last.Answer()));
    EXPECT_EQ(resident.Stop(), 0);
}

TEST(Resident, StopLetsRunningRequestsEnd) {
    const FrontEnd frontEnd;
    ResidentProgram resident(frontEnd.Site().Path(), {"--spare=2"});
    SlowRequest slow(resident.Socket());
    kill(resident.Pid(), SIGUSR1);
    EXPECT_TRUE(Eventually([&] { return resident.Messages().find("serving 1") != std::string::npos; }));
    kill(resident.Pid(), SIGTERM);
    EXPECT_TRUE(Eventually([&] { return !fs::exists(resident.Socket()); }));
    EXPECT_TRUE(Eventually([&] { return resident.Workers().size() == 1; })) << "the idle ones end at once";
    EXPECT_TRUE(IsWhole(slow.Answer()));
    EXPECT_EQ(resident.Stop(), 0);
}

TEST(Resident, StopServesWhatWaitsInItsOwnQueueWhateverAWorkersNumberOfRequests) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--requests-per-worker=1"});
    SlowRequest slow(resident.Socket());
    const std::string request = MessageTo(server.Url());
    std::vector<std::unique_ptr<ScgiClient>> waiting;
    for (int i = 0; i < 4; ++i) {
        waiting.push_back(std::make_unique<ScgiClient>(resident.Socket()));
        waiting.back()->Send(ScgiHeaderText(WithId("waiting"), request.size()) + request);
    }
    kill(resident.Pid(), SIGTERM);
    EXPECT_TRUE(Eventually([&] { return !fs::exists(resident.Socket()); }));
    EXPECT_TRUE(IsWhole(slow.Answer()));
    for (const auto& client : waiting) EXPECT_TRUE(IsWhole(client->Receive()));
    EXPECT_EQ(resident.Stop(), 0);
}

TEST(Resident, EndsEachAnswerAlsoWhenItWasStartedWithoutStandardStreams) {
    const LoopbackServer server;
    const FrontEnd frontEnd;
    for (const std::string closed : {"<&-", ">&-", "<&- >&-", "2>&-", "<&- >&- 2>&-"}) {
        SCOPED_TRACE(closed);
        const std::string program = frontEnd.Site() / "start";
        frontEnd.Site().Write("start", "#!/bin/sh\nexec " QUORBEL_SOAPD " \"$@\" " + closed + "\n");
        fs::permissions(program, fs::perms::owner_all);
        const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1"}, -1, program);
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(IsWhole(AskByScgi(resident.Socket(), MessageTo(server.Url()), WithId("1"))));
        }
    }
}

TEST(Resident, WrongUsageIsToldInOneLine) {
    const FrontEnd frontEnd;
    const ResidentProgram running(frontEnd.Site().Path(), {"--spare=1"});
    const std::string site = frontEnd.Site().Path();
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "--site is required"},
        {{"--site", "/nonexistent"}, "/nonexistent/web/cgi-bin: No such file or directory"},
        {{"--site", site, "--workers", "2", "--spare", "3"}, "--spare is more than --workers"},
        {{"--site", site, "--spare", "0"}, "--spare"},
        {{"--site", site, "--header-timeout", "x"}, "--header-timeout"},
        {{"--site", site, "--header-timeout", "0"}, "is not between 0.001 and 86400 seconds"},
        {{"--site", site, "--body-timeout", "nan"}, "is not between 0.001 and 86400 seconds"},
        {{"--site", site, "--fork\x1b"}, "--fork<ESC>"},
        {{"--site", site, "--socket", running.Socket()}, "another instance has it"},
        {{"--site", site, "--socket", "/nonexistent/s"}, "lock file cannot be made: No such file"},
    };
    for (const auto& [arguments, message] : cases) {
        std::string errors;
        EXPECT_EQ(ExitStatus(arguments, errors), 2) << message;
        EXPECT_THAT(errors, HasSubstr(message));
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
    std::string errors;
    EXPECT_EQ(ExitStatus({"--site", site, "--workers", "4", "--check"}, errors), 0) << errors;
    frontEnd.Site().Write("config/cvlogs.ini", "[SOAP]\nwriter=sqlite\n");
    EXPECT_EQ(ExitStatus({"--site", site, "--check"}, errors), 2);
    EXPECT_THAT(errors, HasSubstr("log of SOAP: "));
    for (const char* ini : {"[SOAP]\nwriter=file\n", ""}) {
        frontEnd.Site().Write("config/cvlogs.ini", ini);
        EXPECT_EQ(ExitStatus({"--site", site, "--check"}, errors), 0) << errors;
    }
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    EXPECT_EQ(ExitStatus({"--site", site, "--check"}, errors), 0) << errors;
    fs::remove_all(frontEnd.Site() / "logs");
    EXPECT_EQ(ExitStatus({"--site", site, "--check"}, errors), 2);
    EXPECT_THAT(errors, HasSubstr("log of SOAP: "));
}
