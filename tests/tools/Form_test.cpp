#include "tools/paging-standin/Form.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::Pair;

namespace standin {

TEST(StandinForm, KeepsOrderAndDoubledNames) {
    EXPECT_THAT(ParseForm("response=1&action=ack&response=2&action=drop"),
                ElementsAre(Pair("response", "1"), Pair("action", "ack"), Pair("response", "2"),
                            Pair("action", "drop")));
}

TEST(StandinForm, DecodesNamesAndValues) {
    EXPECT_THAT(ParseForm("a%2db=x+y%3dz%0A&=only&flag&&c=1=2&end="),
                ElementsAre(Pair("a-b", "x y=z\n"), Pair("", "only"), Pair("flag", ""), Pair("c", "1=2"),
                            Pair("end", "")));
    EXPECT_THAT(ParseForm("a=50%&b=%4&c=%zz&d=%%41"),
                ElementsAre(Pair("a", "50%"), Pair("b", "%4"), Pair("c", "%zz"), Pair("d", "%A")));
    EXPECT_THAT(ParseForm(""), ElementsAre());
}

TEST(StandinForm, ShowsControlCharacters) {
    EXPECT_EQ(OneLine("two\r\nlines\x1b[0m caf\xc3\xa9"), "two\\r\\nlines\\x1b[0m caf\xc3\xa9");
}

}  // namespace standin
