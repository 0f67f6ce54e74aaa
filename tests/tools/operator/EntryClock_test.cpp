#include "tools/cvlogs/EntryClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <vector>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

namespace {

constexpr const char* kEndsSummerTime = "CET-1CEST,M3.5.0,M10.5.0/3";  // from 3 to 2 o'clock
constexpr std::int64_t kSecondPass = 1792890000;                       // 2026-10-25 02:00 of winter time

/// The minutes from the beginning of the second pass.
std::vector<std::int64_t> Minutes(const std::vector<const char*>& times) {
    EntryClock clock;
    std::vector<std::int64_t> minutes;
    minutes.reserve(times.size());
    for (const std::string time : times) minutes.push_back((clock.Tell(time) - kSecondPass) / 60);
    return minutes;
}

std::string Entry(const char* hour, const char* text) {
    return std::string("10/25/2026 ") + hour + ":00 SOAP [" + text + "\n";
}

}  // namespace

TEST(EntryClock, TellsTheHourThatComesTwiceByTheOrderOfTheEntries) {
    setenv("TZ", kEndsSummerTime, 1);
    tzset();
    const struct {
        const char* what;
        std::vector<const char*> times;
        std::vector<std::int64_t> minutes;
    } cases[] = {
        {"both passes",
         {"10/25/2026 01:50:00", "10/25/2026 02:50:00", "10/25/2026 02:10:00", "10/25/2026 02:40:00",
          "10/25/2026 03:05:00"},
         {-70, -10, 10, 40, 65}},
        {"nothing before", {"10/25/2026 02:50:00", "10/25/2026 02:55:00"}, {-10, -5}},
        {"winter before", {"01/25/2026 02:50:00", "10/25/2026 02:50:00"}, {-273 * 1440 + 50, -10}},
        {"a late writer in the first pass",
         {"10/25/2026 02:10:30", "10/25/2026 02:10:00", "10/25/2026 02:20:00"},
         {-49, -50, -40}},
        {"a late writer at either end of the second",
         {"10/25/2026 02:59:59", "10/25/2026 02:00:00", "10/25/2026 02:59:59", "10/25/2026 02:01:00",
          "10/25/2026 03:00:00", "10/25/2026 02:59:00"},
         {0, 0, 0, 1, 60, 59}},
        {"another log behind", {"10/27/2026 12:00:00", "10/25/2026 02:10:00"}, {2 * 1440 + 600, -50}},
        {"the hour that spring leaves out", {"03/29/2026 02:30:00"}, {-210 * 1440 + 30}},
    };
    for (const auto& c : cases) EXPECT_EQ(Minutes(c.times), c.minutes) << c.what;
    setenv("TZ", "UTC", 1);
    tzset();
}

TEST(EntryClock, TellsTheHourAlsoWhereASearchLeavesEntriesOut) {
    const OperatorSite site;
    const std::string path =
        site.Files().Write("a.txt", Entry("01:50", "ERROR] summer") + Entry("02:50", "INFO] a") +
                                        Entry("02:10", "INFO] b") + Entry("02:40", "ERROR] c"));
    const auto result =
        RunProgram({.program = CVLOGS_PROGRAM,
                    .arguments = {"query", "--file", path, "--level", "error", "--json"},
                    .environment = {std::string("TZ=") + kEndsSummerTime, "PATH=/usr/bin:/bin"}});
    EXPECT_THAT(result.output, testing::HasSubstr(std::to_string(kSecondPass + std::int64_t{40} * 60)));
}
