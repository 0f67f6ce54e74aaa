#include "tools/cvlogs/Moment.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace quorbel;

TEST(Moment, ReadsDatesAndAges) {
    setenv("TZ", "UTC", 1);
    constexpr std::time_t kNow = 1706778303;  // 2024-02-01 09:05:03
    const std::pair<const char*, std::int64_t> cases[] = {
        {"2024-02-01", 1706745600},
        {"2024-02-01 09:05", 1706778300},
        {"2024-02-01 09:05:03", kNow},
        {"2024-02-01T09:05:03", kNow},
        {"02/01/2024", 1706745600},
        {"02/01/2024 09:05:03", kNow},
        {"2024-02-29", 1709164800},
        {"@12", 12},
        {"90s", kNow - 90},
        {"15m", kNow - 900},
        {"2h", kNow - 7200},
        {"7d", kNow - 604800},
        {"10 min ago", kNow - 600},
        {"1 week ago", kNow - 604800},
        {"now", kNow},
        {"today", 1706745600},
        {"yesterday", 1706745600 - 86400},
        {"08:00", 1706774400},
        {"08:00:59", 1706774459},
        {"2024-02-01T09:05:03.999", kNow},
        {"2024-02-01T10:05:03.123+01:00", kNow},
        {"2024-02-01T09:05:03Z", kNow},
    };
    for (const auto& [text, seconds] : cases) EXPECT_EQ(ParseMoment(text, kNow), seconds) << text;
}

TEST(Moment, RefusesWhatIsNoMoment) {
    for (const char* text :
         {"", "tomorrow", "2024-02-30", "2024-13-01", "2024-02-01 25:00", "2024-02-01x", "@", "@1x", "h",
          "-2h", "2 x ago", "25:00", "ago", "99999999999d", "1706778303"}) {
        EXPECT_EQ(ParseMoment(text, 0), std::nullopt) << text;
    }
}
