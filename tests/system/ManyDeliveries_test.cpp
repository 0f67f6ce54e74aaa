// The delivery journal under 32 programs at a time: they archive it every few entries, and a third of them is killed.
//
// QUORBEL_JOURNAL_REQUESTS sets how many requests are served; the figures are printed.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <thread>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"

using namespace quorbel;
namespace fs = std::filesystem;

namespace {

constexpr int kPrograms = 32;
constexpr int kKillsEvery = 3;

std::string Program() {
    const char* path = std::getenv("QUORBEL_RELEASE_PROGRAM");
    return path == nullptr ? QUORBEL_SOAP : path;
}

int Requests() {
    if (const char* wanted = std::getenv("QUORBEL_JOURNAL_REQUESTS"); wanted != nullptr)
        return std::atoi(wanted);
    return std::getenv("QUORBEL_RELEASE_PROGRAM") == nullptr ? 96 : 640;
}

/// Serves requests one after another, kills some of them at any moment, and notes for each whether its answer is whole.
class Sender {
public:
    Sender(const FrontEnd& frontEnd, std::string url, int number)
        : frontEnd_(frontEnd),
          url_(std::move(url)),
          number_(number),
          random_(static_cast<unsigned>(number + 1)) {}

    void Send(int requests) {
        std::ofstream notes(frontEnd_.Site() / ("notes" + std::to_string(number_)));
        for (int i = 0; i < requests; ++i) {
            const std::string id = "p" + std::to_string(number_) + "-" + std::to_string(i);
            const auto result = i % kKillsEvery == 1 ? ServeAndKill(id) : Serve(id);
            notes << id << ' ' << result.output.ends_with("</soap:Envelope>") << std::endl;
        }
    }

private:
    ProgramResult Serve(const std::string& id) {
        const auto start = std::chrono::steady_clock::now();
        ProgramResult result = frontEnd_.ServeWith(Program(), MessageTo(url_), {"HTTP_X_REQUEST_ID=" + id});
        usual_ = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(result.exitStatus, 0) << id;
        return result;
    }

    ProgramResult ServeAndKill(const std::string& id) {
        const double delay = usual_.count() * std::uniform_real_distribution<>(0.2, 1.2)(random_);
        return frontEnd_.ServeWith("/usr/bin/timeout", MessageTo(url_), {"HTTP_X_REQUEST_ID=" + id},
                                   {"-s", "KILL", std::to_string(delay), Program()});
    }

    const FrontEnd& frontEnd_;
    const std::string url_;
    const int number_;
    std::minstd_rand random_;
    std::chrono::duration<double> usual_{0.1};
};

/// The lines of the journal and of its archives.
std::vector<std::string> LinesOf(const fs::path& logs) {
    std::vector<std::string> lines;
    for (const auto& entry : fs::directory_iterator(logs)) {
        const std::string name = entry.path().filename();
        if (!name.starts_with("deliveries_log.txt") || name.ends_with(".lock")) continue;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) lines.push_back(line);
    }
    return lines;
}

/// How often each id stands in the journal; a line that is no whole entry fails the test.
std::map<std::string, int> EntriesOf(const fs::path& logs, int& archives) {
    const std::string time = R"(\d\d/\d\d/\d{4} \d\d:\d\d:\d\d )";
    const std::regex whole(time +
                           R"(Deliveries \[INFO\] at=\S+ id=(p\d+-\d+) method=SendStdMessage to=oncall )" +
                           R"(server=\S+ via=primary outcome=answered http=200 ms=\d+ bytes=4 reply=OK)");
    const std::regex archiving(time + "Archiving .*");
    std::map<std::string, int> entries;
    for (const std::string& line : LinesOf(logs)) {
        std::smatch match;
        if (std::regex_match(line, match, whole)) {
            ++entries[match[1]];
        } else {
            EXPECT_TRUE(std::regex_match(line, archiving)) << line;
            ++archives;
        }
    }
    return entries;
}

}  // namespace

TEST(ManyDeliveries, AreNeitherLostNorDoubledNorTorn) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    const std::string ini = ReadFile(frontEnd.Site() / "config/cvlogs.ini");
    frontEnd.Site().Write("config/cvlogs.ini", ini.substr(0, ini.find("[SOAP]")) +
                                                   ini.substr(ini.find("[Deliveries]")) +
                                                   "bytesPerFiles=2000\nnumFiles=100000\n");
    std::vector<std::thread> senders;
    senders.reserve(kPrograms);
    for (int number = 0; number < kPrograms; ++number) {
        senders.emplace_back(
            [&, number] { Sender(frontEnd, server.Url(), number).Send(Requests() / kPrograms); });
    }
    for (auto& sender : senders) sender.join();

    int archives = 0;
    std::map<std::string, int> entries = EntriesOf(frontEnd.Site() / "logs", archives);
    std::map<bool, int> requests;  // by whether the answer is whole
    for (int number = 0; number < kPrograms; ++number) {
        std::ifstream notes(frontEnd.Site() / ("notes" + std::to_string(number)));
        std::string id;
        for (bool isWhole = false; notes >> id >> isWhole;) {
            ++requests[isWhole];
            const int times = entries[id];
            EXPECT_TRUE(times == 1 || (times == 0 && !isWhole))
                << id << " stands there " << times << " times";
            entries.erase(id);
        }
    }
    EXPECT_TRUE(entries.empty()) << "an entry of nobody: " << entries.begin()->first;
    EXPECT_EQ(requests[true] + requests[false], Requests() / kPrograms * kPrograms);
    EXPECT_GT(requests[true], Requests() / 2);
    EXPECT_GT(requests[false], 0) << "none was killed in time";
    std::cout << requests[true] << " requests answered, " << requests[false] << " killed before, " << archives
              << " archives made\n";
}
