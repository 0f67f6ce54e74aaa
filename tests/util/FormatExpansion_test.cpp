#include "util/FormatExpansion.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(FormatExpansion, PrintsEveryMissingArgumentAsZero) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},
        {"/spool/100%%", "/spool/100%"},
        {"%5%", "%"},
        {"%d|%5d|%-3d|%03d|%+i", "0|    0|0  |000|+0"},
        {"%u%o%x%X %lld %zu %hhx", "0000 0 0 0"},
        {"%f %.2f %e %g %a", "0.000000 0.00 0.000000e+00 0 0x0p+0"},
        {"%s|%8s|%-8s|%.3s", "(null)|  (null)|(null)  |"},
        {"%p|%7p", "(nil)|  (nil)"},
        {"a%cb%nc", "abc"},
        {"%*d%.*f", "00"},
        {"50% of", "500f"},        // a blank flag and a conversion to octal
        {"100%y %!", "100%y %!"},  // no conversions
        {"half %", "half "},
        {"half %-08.3l", "half "},
    };
    for (const auto& [text, printed] : cases) EXPECT_EQ(ExpandWithoutArguments(text, 255), printed) << text;
}

TEST(FormatExpansion, NeverExceedsItsLimit) {
    EXPECT_EQ(ExpandWithoutArguments("abcdef", 3), "abc");
    EXPECT_EQ(ExpandWithoutArguments("%999999999999d", 20), std::string(19, ' ') + "0");
    EXPECT_EQ(ExpandWithoutArguments("%.999999999999f", 20), "0." + std::string(18, '0'));
    EXPECT_EQ(ExpandWithoutArguments("%300s", 10), std::string(4, ' ') + "(null)");
}
