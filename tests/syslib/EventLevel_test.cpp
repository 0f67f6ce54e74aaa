#include "syslib/EventLevel.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(EventLevel, ParsesEverySpellingAndNothingElse) {
    const struct {
        const char* text;
        EventLevel configured;
        EventLevel filtered;
    } cases[] = {
        {"trace", EventLevel::Trace, EventLevel::Trace},
        {"Information", EventLevel::Info, EventLevel::Info},
        {"infor", EventLevel::Info, EventLevel::Info},
        {"WARNI", EventLevel::Warn, EventLevel::Warn},
        {"criti", EventLevel::Critical, EventLevel::Critical},
        {"Fatal", EventLevel::Fatal, EventLevel::Fatal},
        // A typing error must not switch the log off.
        {"verbose", EventLevel::Warn, EventLevel::None},
        {"none", EventLevel::Warn, EventLevel::None},
        {"inf", EventLevel::Warn, EventLevel::None},
        {"", EventLevel::Warn, EventLevel::None},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ParseEventLevel(c.text, UnknownLevel::Warn), c.configured) << c.text;
        EXPECT_EQ(ParseEventLevel(c.text, UnknownLevel::None), c.filtered) << c.text;
    }
}

TEST(EventLevel, NamesAndTagsNumbersOutsideTheRangeLikeNone) {
    EXPECT_EQ(EventLevelName(3), "INFO");
    EXPECT_EQ(EventLevelTag(6), "[CRITICAL]");
    for (const unsigned level : {0U, 8U, 4000000000U}) {
        EXPECT_EQ(EventLevelName(level), "NONE");
        EXPECT_EQ(EventLevelTag(level), "");
    }
}
