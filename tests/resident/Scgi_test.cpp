#include "resident/Scgi.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/ScgiClient.h"

using namespace quorbel;
using namespace std::string_literals;

namespace {

std::string Netstring(const std::string& content) {
    return std::to_string(content.size()) + ":" + content + ",";
}

/// With a zero byte for each "|".
std::string Zeroed(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\0');
    return text;
}

/// Hands over `pieceSize` bytes at most at a time; what is left over stays in `text`.
ScgiHeader Read(std::string& text, std::size_t pieceSize = 65536) {
    ScgiHeader header;
    while (header.Wanted() > 0 && !text.empty()) {
        const std::size_t count = std::min(header.Wanted(), std::min(pieceSize, text.size()));
        header.Add(text.substr(0, count));
        text.erase(0, count);
    }
    return header;
}

const std::string kShortest = Zeroed("CONTENT_LENGTH|0|SCGI|1|");

}  // namespace

TEST(Scgi, TakesItsHeaderAndNothingOfTheBodyHoweverItArrives) {
    for (const std::size_t pieceSize : {1, 2, 7, 28, 29, 65536}) {
        std::string text = ScgiHeaderText({"REQUEST_METHOD=POST", "EMPTY="}, 7) + "12:,<x/>";
        const ScgiHeader header = Read(text, pieceSize);
        ASSERT_EQ(header.Status(), ScgiHeader::State::Complete) << pieceSize;
        EXPECT_EQ(text, "12:,<x/>") << pieceSize;
        EXPECT_STREQ(header.Find("CONTENT_LENGTH"), "7");
        EXPECT_STREQ(header.Find("REQUEST_METHOD"), "POST");
        EXPECT_STREQ(header.Find("EMPTY"), "");
        EXPECT_EQ(header.Find("REQUEST"), nullptr);
    }
    std::string shortest = Netstring(kShortest) + "<";
    EXPECT_EQ(Read(shortest).Status(), ScgiHeader::State::Complete);
    EXPECT_EQ(shortest, "<");
}

TEST(Scgi, EndsAtTheFirstThingThatIsNoHeader) {
    const std::string largest =
        kShortest + "X\0"s + std::string(ScgiHeader::kLimit - kShortest.size() - 3, 'x') + '\0';
    const std::pair<const char*, std::string> cases[] = {
        {"no number", "x" + Netstring(kShortest)},
        {"a sign", "+" + Netstring(kShortest)},
        {"no length", ":" + kShortest},
        {"an HTTP request", "POST /cgi-bin/quorbel-soap HTTP/1.0\r\n\r\n"},
        {"a length that never ends", std::string(100, '1')},
        {"more than the limit", Netstring(largest + "Y\0\0"s)},
        {"shorter than any header", "23:" + std::string(40, 'x')},
        {"no comma", "24:" + kShortest + ";"},
        {"another variable first", Netstring(Zeroed("SCGI|1|CONTENT_LENGTH|0|"))},
        {"no SCGI", Netstring(Zeroed("CONTENT_LENGTH|0|REQUEST_METHOD|POST|"))},
        {"another version", Netstring(Zeroed("CONTENT_LENGTH|0|SCGI|2|"))},
        {"a name without a value", Netstring(kShortest + "X\0"s)},
        {"a value without an end", Netstring(kShortest + "X\0y"s)},
    };
    for (const auto& [what, bytes] : cases) {
        std::string text = bytes;
        const ScgiHeader header = Read(text);
        EXPECT_EQ(header.Status(), ScgiHeader::State::Bad) << what;
        EXPECT_EQ(header.Wanted(), 0u) << what;
    }
    std::string text = Netstring(largest);
    EXPECT_EQ(Read(text, 4096).Status(), ScgiHeader::State::Complete);
}

TEST(Scgi, StopsAtEveryByteWithoutAnEnd) {
    const std::string whole = ScgiHeaderText({"REQUEST_METHOD=GET"}, 0);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        std::string text = whole.substr(0, size);
        EXPECT_EQ(Read(text).Status(), ScgiHeader::State::Incomplete) << size;
    }
}
