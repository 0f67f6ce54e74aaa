#include "syslib/EventTime.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(EventTime, WritesTheMonthFirst) {
    std::tm local{};
    local.tm_year = 2024 - 1900;
    local.tm_mon = 1;
    local.tm_mday = 1;
    local.tm_hour = 9;
    local.tm_min = 5;
    local.tm_sec = 3;
    local.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&local);

    std::string text;
    EXPECT_EQ(FormatEventTime(seconds, &text), seconds);
    EXPECT_EQ(text, "02/01/2024 09:05:03");
}

TEST(EventTime, TakesZeroForNow) {
    const std::time_t before = std::time(nullptr);
    EXPECT_GE(FormatEventTime(0), before);
}
