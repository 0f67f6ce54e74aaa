#include "soap/ResponseEnvelope.h"

#include <gtest/gtest.h>

using namespace quorbel;

namespace {

const std::string kOpening =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<soap:Envelope xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
    "xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">\n"
    "  <soap:Body>\n";

std::string TextAnswer(const std::string& text) {
    return kOpening +
           "    <AddGroupResponse xmlns=\"http://quorbel.example/soap\">\n        <AddGroupResult>" + text +
           "</AddGroupResult>\n    </AddGroupResponse>\n </soap:Body>\n</soap:Envelope>";
}

std::string QueryAnswer(const std::string& content) {
    return kOpening +
           "    <QueryGroupResponse xmlns=\"http://quorbel.example/soap\">\n      <QueryGroupResult>\n"
           "        <szResponseMessage>" +
           content +
           "       </QueryGroupResult>\n     </QueryGroupResponse>\n  </soap:Body>\n</soap:Envelope>";
}

/// The list that follows the message; empty items mean that none of the reply's lines became one.
std::string List(const std::vector<std::string>& items) {
    std::string list = "         <szResult>\n";
    for (const auto& item : items) list += "          <string>" + item + "</string>\n";
    return list + "         </szResult>\n";
}

}  // namespace

TEST(ResponseEnvelope, CarriesTheReplyAsOneText) {
    const struct {
        const char* reply;
        const char* text;
    } cases[] = {
        {"OK\n", "OK"},          // one line feed goes
        {"OK\r\n", "OK\r"},      // the carriage return stays
        {"a\nb\n\n", "a\nb\n"},  // no more than one goes
        {"<1 & 2>", "&lt;1 &amp; 2&gt;"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ResponseEnvelope("AddGroup", c.reply), TextAnswer(c.text)) << c.reply;
}

TEST(ResponseEnvelope, SplitsAQueryReplyIntoMessageAndItems) {
    const std::string end = "</szResponseMessage>\n";
    const struct {
        std::string reply;
        std::string content;
    } cases[] = {
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
    for (const auto& c : cases)
        EXPECT_EQ(ResponseEnvelope("QueryGroup", c.reply), QueryAnswer(c.content)) << c.reply;
}

TEST(ResponseEnvelope, LooksForQueryInTheExactSpelling) {
    EXPECT_EQ(ResponseEnvelope("query", "a\r\n").find("szResponseMessage"), std::string::npos);
}
