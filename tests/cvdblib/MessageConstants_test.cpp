#include "cvdblib/sqlite3/src/MessageConstants.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace quorbel;

TEST(MessageConstants, ReadsALine) {
    const struct {
        const char* line;
        int id;
        const char* text;
    } cases[] = {
        {"#define MSG_X 7202 /* Disk full */", 7202, "Disk full"},
        {"  \t#define\tMSG_X\t 7202\t/*Disk full*/ \r\n", 7202, "Disk full"},
        {"#defineX 5 /*t*/", 5, "t"},
        {"#define X -5 /*t*/", -5, "t"},
        {"#define X 5tail /*t*/", 5, "t"},
        {"#define X 99999999999 /*t*/", 2147483647, "t"},
        {"#define X 5 /* it's /* caf\xC3\xA9 */", 5, "it's /* caf\xC3\xA9"},
        {"#define X 5 /* */", 5, ""},
    };
    for (const auto& c : cases) {
        const auto message = ParseMessageConstant(c.line);
        ASSERT_TRUE(message) << c.line;
        EXPECT_EQ(message->id, c.id) << c.line;
        EXPECT_EQ(message->text, c.text) << c.line;
    }
}

TEST(MessageConstants, PassesOverWhatDefinesNoMessage) {
    for (const char* line :
         {"", "\n", "#def", "/* #define X 5 */", "#define", "#define GUARD_H", "#define X 5",
          "#define X 0 /*t*/", "#define X 0 t", "#define X Y /*t*/", "#define X 5 // t", "#define X 5 /**/",
          "#define X 5 /*/", "#define X 5 /* open", "#define X 5/*t*/"}) {
        EXPECT_FALSE(ParseMessageConstant(line)) << line;
    }
    EXPECT_THROW(ParseMessageConstant("#define X 5 /"), std::out_of_range);
}
