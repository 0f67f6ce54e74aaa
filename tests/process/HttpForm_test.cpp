#include "process/HttpForm.h"

#include <gtest/gtest.h>

using namespace quorbel;

namespace {

std::string Body(const std::vector<std::string>& lines) {
    return std::string(BuildFormBody(lines).Text());
}

}  // namespace

TEST(HttpForm, EncodesEachByteClass) {
    const struct {
        const char* text;
        const char* encoded;
    } cases[] = {
        {"a/b_c.d", "a/b_c.d"},        // travels unchanged
        {"x y&z=1", "x%20y%26z%3d1"},  // space and separators
        {"a-b@c\n", "a%2db%40c%0a"},
        {"caf\xC3\xA9", "caf%ff%ff"},  // any byte above ASCII
        {"", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(EncodeFormText(c.text, 100), c.encoded) << c.text;
}

TEST(HttpForm, CutsWhereTheServersFieldEnds) {
    EXPECT_EQ(EncodeFormText("abc", 4), "");
    EXPECT_EQ(EncodeFormText("abc", 5), "a");
    EXPECT_EQ(EncodeFormText(std::string(20000, 'x'), 10000).size(), 9996u);
    EXPECT_EQ(EncodeFormText(std::string(20000, ' '), 10000).size(), 3u * 3332);
}

TEST(HttpForm, JoinsLinesSplitAtTheFirstEquals) {
    EXPECT_EQ(Body({"a=1", "b=2"}), "a=1&b=2");
    EXPECT_EQ(Body({"a b=c=d"}), "a%20b=c%3dd");
    EXPECT_EQ(Body({"=abc"}), "abc");
    EXPECT_EQ(Body({"abc"}), "abc");
    EXPECT_EQ(Body({"a=1", "", "c=3"}), "a=1&c=3");
    EXPECT_EQ(Body({"", "c=3"}), "&c=3");
    EXPECT_EQ(Body({}), "");
}
