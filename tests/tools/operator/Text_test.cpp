#include "tools/operator/Text.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(Text, MakesOneValidJsonStringOfAnyBytes) {
    const std::pair<std::string, const char*> cases[] = {
        {"a \"b\" \\c/", R"("a \"b\" \\c/")"},
        {"tab\t, lines\r\n", R"("tab\t, lines\r\n")"},
        {std::string("\0\x1b[31m\x7f", 7), R"("\u0000\u001b[31m\u007f")"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\x9F", "\"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\x9F\""},
        {"\xC2\x9B", R"("\u009b")"},                            // a terminal takes it for ESC [
        {"caf\xE9!", R"("caf\ufffd!")"},                        // Latin-1
        {"\xC3", R"("\ufffd")"},                                // cut in the middle
        {"\xC0\xAF", R"("\ufffd\ufffd")"},                      // overlong
        {"\xED\xA0\x80", R"("\ufffd\ufffd\ufffd")"},            // half a surrogate pair
        {"\xF4\x90\x80\x80", R"("\ufffd\ufffd\ufffd\ufffd")"},  // beyond the last character
    };
    for (const auto& [text, json] : cases) EXPECT_EQ(JsonString(text), json);
}

TEST(Text, KeepsTabsAndLineEndsOutOfAField) {
    EXPECT_EQ(TsvField("a\tb\nc\rd\\n"), R"(a\tb\nc\rd\\n)");
}

TEST(Text, ShowsWhatATerminalWouldActOn) {
    EXPECT_EQ(Visible("plain \xC3\xA9"), "plain \xC3\xA9");
    EXPECT_EQ(Visible("\x1b[2J\t\n\x7f\xC2\x9B\xE9"), "<ESC>[2J<HT><NL><DEL><9b><e9>");
}
