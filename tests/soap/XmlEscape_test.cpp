#include "soap/XmlEscape.h"

#include <gtest/gtest.h>

using namespace quorbel;

TEST(XmlEscape, WritesReservedCharactersAsEntities) {
    EXPECT_EQ(EscapeXml("<a href='x' b=\"y\">&amp;</a>"),
              "&lt;a href=&apos;x&apos; b=&quot;y&quot;&gt;&amp;amp;&lt;/a&gt;");
    EXPECT_EQ(EscapeXml("caf\xC3\xA9 \xFF\x01\t\r\n"), "caf\xC3\xA9 \xFF\x01\t\r\n");
    EXPECT_EQ(EscapeXml(""), "");
}

TEST(XmlEscape, KeepsWhiteSpaceAsEntitiesWhenAsked) {
    EXPECT_EQ(EscapeXml("a\tb\nc\r\nd\re\r", WhiteSpace::AsEntities), "a&#xA;b&#xA;c&#xA;d&#xD;e&#xD;");
}
