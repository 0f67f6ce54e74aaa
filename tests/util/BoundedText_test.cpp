#include "util/BoundedText.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(BoundedText, FieldIsZeroedFilledAndAlwaysTerminated) {
    char field[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    CopyText(field, "ab");
    EXPECT_EQ(std::string_view(field, sizeof field), std::string_view("ab\0\0\0\0", 6));
    CopyText(field, "abcdefgh");
    EXPECT_STREQ(field, "abcde");
}

TEST(BoundedText, CutLeavesNoHalfSequence) {
    const struct {
        const char* text;
        std::size_t limit;
        const char* cut;
    } cases[] = {
        {"abc", 3, "abc"},
        {"abcd", 3, "abc"},
        {"caf\xC3\xA9s", 4, "caf"},               // inside a sequence of two
        {"caf\xC3\xA9s", 5, "caf\xC3\xA9"},       // just behind it
        {"x\xF0\x9F\x94\x94y", 4, "x"},           // inside a sequence of four
        {"\x80\x80\x80\x80", 3, "\x80\x80\x80"},  // no UTF-8 at all: left alone
    };
    for (const auto& c : cases)
        EXPECT_EQ(WithoutIncompleteEnd(std::string_view(c.text).substr(0, c.limit)), c.cut)
            << c.text << " at " << c.limit;
}
