#include "util/StringRoutines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

using namespace quorbel;

TEST(StringRoutines, TrimsBothEndsInPlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"   a   ", "a"}, {"\t\r\n a b \v\f", "a b"}, {"   ", ""}, {"", ""}, {"\xA0x\xA0", "\xA0x\xA0"}};
    for (const auto& [untrimmed, trimmed] : cases) {
        std::string text = untrimmed;
        EXPECT_STREQ(TrimSpaces(text.data()), trimmed) << untrimmed;
    }
    EXPECT_EQ(TrimChars("\r\n line \ttext\r\n", "\r\n "), "line \ttext");
    EXPECT_EQ(TrimChars("\t\r\n", "\r\n "), "\t") << "a tab is not in that set";
    EXPECT_EQ(TrimChars("   ", " "), "");
}

TEST(StringRoutines, SkipsToTheFirstTextOfALine) {
    EXPECT_EQ(SkipBlankLine("  #x", true), nullptr);
    EXPECT_STREQ(SkipBlankLine("  #x", false), "#x");
    EXPECT_STREQ(SkipBlankLine(" \t\r\n x y", true), "x y");
    EXPECT_EQ(SkipBlankLine(" \r\n", false), nullptr);
    EXPECT_EQ(SkipBlankLine(nullptr, false), nullptr);
}

TEST(StringRoutines, ComparesWithoutCase) {
    EXPECT_EQ(CompareNoCase("FALSEHOOD", "false", 4), 0);
    EXPECT_NE(CompareNoCase("fal", "false", 4), 0);
    EXPECT_EQ(CompareNoCase("sql", "SQL", 100), 0);
    EXPECT_EQ(CompareNoCase(nullptr, "", 5), 0);
    EXPECT_LT(CompareNoCase("a", "B", 1), 0);
    EXPECT_GT(CompareNoCase("\xE9", "z", 1), 0);
    EXPECT_TRUE(EndsWithNoCase("ns1:SENDStdMessage", "SendStdMessage"));
    EXPECT_FALSE(EndsWithNoCase("Message", "SendStdMessage"));
    EXPECT_FALSE(EndsWithNoCase("x", ""));
}

TEST(StringRoutines, NamesOfBlanksQuotesAndForeignLettersHoldNothingPrintable) {
    EXPECT_TRUE(HoldsPrintable(" \" a"));
    for (const char* text : {"", " ", "\"\" \"", "\t\n", "\xC3\xA9\xC3\xBC"})
        EXPECT_FALSE(HoldsPrintable(text)) << text;
}

TEST(ConfigPath, JoinsAndTurnsBackslashesInPlace) {
    char path[32];
    char windows[] = "..\\config";
    EXPECT_STREQ(MakeConfigPath(path, sizeof path, windows, "dir"), "../config/dir");
    EXPECT_STREQ(windows, "../config");
    char slash[] = "conf\\";
    EXPECT_STREQ(MakeConfigPath(path, sizeof path, slash, "dir"), "conf/dir");
    char empty[] = "";
    EXPECT_STREQ(MakeConfigPath(path, sizeof path, empty, "soap_log.txt"), "soap_log.txt");
    EXPECT_STREQ(MakeConfigPath(path, sizeof path, nullptr, "dir"), "dir");
    EXPECT_STREQ(MakeConfigPath(path, 5, slash, "dir"), "conf");
}

TEST(UrlEncode, KeepsLettersAndDigitsOnly) {
    const auto encode = [](const char* text) {
        return std::string(std::unique_ptr<char, decltype(&std::free)>(UrlEncode(text), &std::free).get());
    };
    EXPECT_EQ(encode("a b-c"), "a%20b%2Dc");
    EXPECT_EQ(encode("_./Z9\x01"), "%5F%2E%2FZ9%01");
    EXPECT_EQ(encode("caf\xC3\xA9"), "caf%FF%FF");
    EXPECT_EQ(encode(""), "");
}

TEST(VisibleText, ShowsControlBytes) {
    EXPECT_STREQ(MakeVisible("A\tB\x01", 4), "A<TAB>B<01>");
    EXPECT_STREQ(MakeVisible("\r\n\x1B\0z", 5), "<CR><LF><ESC><00>z");
    EXPECT_STREQ(MakeVisible("\xE9x\xFF", 3), "<FFFx<FFF");
    EXPECT_EQ(std::string(MakeVisible(std::string(9000, '\t').c_str(), 9000)).size(), 4095u);
}

TEST(VisibleText, NamesControlCharacters) {
    const std::pair<char, const char*> cases[] = {{'\0', "<NUL>"},   {'\t', "<HT>"}, {'\x1F', "<US>"},
                                                  {'\x7F', "<DEL>"}, {'a', "a"},     {'\xE9', "<e9>"}};
    for (const auto& [c, name] : cases) EXPECT_STREQ(ControlName(c), name);
}
