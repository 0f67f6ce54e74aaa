#include "soap/Envelopes.h"

#include <gtest/gtest.h>

#include "tests/support/Documents.h"

using namespace quorbel;

namespace {

/// What stands between two texts of a response; the system cases hold its frame.
std::string Between(const std::string& from, const std::string& to, const std::string& response) {
    const std::size_t start = response.find(from) + from.size();
    return response.substr(start, response.rfind(to) - start);
}

/// The list that follows the message; empty items mean that none of the reply's lines became one.
std::string List(const std::vector<std::string>& items) {
    std::string list = "         <szResult>\n";
    for (const auto& item : items) list += "          <string>" + item + "</string>\n";
    return list + "         </szResult>\n";
}

}  // namespace

TEST(Envelopes, CarriesTheReplyAsOneText) {
    const std::pair<const char*, const char*> cases[] = {
        {"OK\n", "OK"},          // one line feed goes
        {"OK\r\n", "OK\r"},      // the carriage return stays
        {"a\nb\n\n", "a\nb\n"},  // no more than one goes
        {"<1 & 2>", "&lt;1 &amp; 2&gt;"},
        {"", ""},
    };
    for (const auto& [reply, text] : cases)
        EXPECT_EQ(Between("<AddGroupResult>", "</AddGroupResult>", ResponseDocument("AddGroup", reply)), text)
            << reply;
}

TEST(Envelopes, SplitsAQueryReplyIntoMessageAndItems) {
    const std::string end = "</szResponseMessage>\n";
    const std::pair<std::string, std::string> cases[] = {
        {"OK\r\nline1\r\n\r\nline2\r\n", "OK" + end + List({"line1", "line2"})},
        {"OK\r\nlast <line>", "OK" + end + List({"last &lt;line&gt;"})},  // without a line feed: not cut
        {"only", "only" + end},
        {"OK\r\n", "OK" + end},
        {"OK\r\n \r\n\r\n", "OK" + end + List({})},
        {"OK\r\n \t \r\n  in\r\n", "OK" + end + List({" \t ", "  in"})},  // a tab counts, blanks are kept
        {"OKx\nline1x\n", "OK" + end + List({"line1"})},                  // bare line feeds cost a character
        {"OK\r\n\nnext\r\n", "OK" + end + List({"next"})},
        {"OK\r\nx\nnext\r\n", "OK" + end + List({"next"})},
        {"\nfirst\r\n", end + List({"first"})},
        {"caf\xC3\xA9\nt\xC3\xA9\n", "caf" + end + List({"t"})},  // cut inside a character: all of it goes
        {"", end},
    };
    for (const auto& [reply, content] : cases)
        EXPECT_EQ(Between("<szResponseMessage>", "       </QueryGroupResult>",
                          ResponseDocument("QueryGroup", reply)),
                  content)
            << reply;
}

TEST(Envelopes, LooksForQueryInTheExactSpelling) {
    EXPECT_EQ(ResponseDocument("query", "a\r\n").find("szResponseMessage"), std::string::npos);
}

TEST(Envelopes, WriteReservedCharactersAsEntities) {
    EXPECT_EQ(EscapeXml("<a href='x' b=\"y\">&amp;</a>"),
              "&lt;a href=&apos;x&apos; b=&quot;y&quot;&gt;&amp;amp;&lt;/a&gt;");
    EXPECT_EQ(EscapeXml("a\tb\nc\r\nd\re\r", WhiteSpace::AsEntities), "a&#xA;b&#xA;c&#xA;d&#xD;e&#xD;");
}

TEST(Envelopes, KeepValidTextAndReplaceAllElse) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"caf\xC3\xA9 \t\r\n\x7F", "caf\xC3\xA9 \t\r\n\x7F"},
        {"\xEF\xBF\xBD \xEE\x80\x80 \xF4\x8F\xBF\xBF", "\xEF\xBF\xBD \xEE\x80\x80 \xF4\x8F\xBF\xBF"},
        {"M\xFFller", "M\xEF\xBF\xBDller"},
        {std::string("a\0b\x1B[31m", 8),
         "a\xEF\xBF\xBD"
         "b\xEF\xBF\xBD[31m"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF", "\xEF\xBF\xBD\xEF\xBF\xBD"},                  // U+FFFE, U+FFFF
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},                  // a surrogate
        {"\xC0\xBC<", "\xEF\xBF\xBD\xEF\xBF\xBD&lt;"},                             // a blind "<"
        {"\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"},                                  // cut
        {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // beyond U+10FFFF
    };
    for (const auto& [text, escaped] : cases) EXPECT_EQ(EscapeXml(text), escaped) << text;
}

TEST(Envelopes, EscapeTheHostName) {
    EXPECT_NE(FaultDocument("2004", "x", "a<b").find("<faultactor>http://a&lt;b/quorbel.wsdl<"),
              std::string::npos);
}
