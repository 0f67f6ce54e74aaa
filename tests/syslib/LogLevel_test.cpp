#include "syslib/LogLevel.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(LogLevel, ParsesEverySpellingAndNothingElse) {
    const struct {
        const char* text;
        LogLevel configured;
        LogLevel filtered;
    } cases[] = {
        {"trace", LogLevel::Trace, LogLevel::Trace},
        {"Information", LogLevel::Info, LogLevel::Info},
        {"infor", LogLevel::Info, LogLevel::Info},
        {"WARNI", LogLevel::Warn, LogLevel::Warn},
        {"criti", LogLevel::Critical, LogLevel::Critical},
        {"Fatal", LogLevel::Fatal, LogLevel::Fatal},
        // A typing error must not switch the log off.
        {"verbose", LogLevel::Warn, LogLevel::None},
        {"none", LogLevel::Warn, LogLevel::None},
        {"inf", LogLevel::Warn, LogLevel::None},
        {"", LogLevel::Warn, LogLevel::None},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ParseLogLevel(c.text, UnknownLevel::Warn), c.configured) << c.text;
        EXPECT_EQ(ParseLogLevel(c.text, UnknownLevel::None), c.filtered) << c.text;
    }
}

TEST(LogLevel, NamesAndTagsNumbersOutsideTheRangeLikeNone) {
    EXPECT_EQ(LogLevelName(3), "INFO");
    EXPECT_EQ(LogLevelTag(6), "[CRITICAL]");
    for (const unsigned level : {0U, 8U, 4000000000U}) {
        EXPECT_EQ(LogLevelName(level), "NONE");
        EXPECT_EQ(LogLevelTag(level), "");
    }
}
