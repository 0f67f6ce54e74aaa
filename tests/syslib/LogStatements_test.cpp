#include "syslib/LogStatements.h"

#include <gtest/gtest.h>

#include "syslib/CVDBProcessorFatalException.h"

using namespace quorbel;

TEST(LogStatements, PasteAValueOnlyWithoutQuotes) {
    EXPECT_EQ(
        InsertLogRecordAsText("t", {"Send", 5000000000, 3, "100%d", -1, "CVsoap"}),
        "INSERT INTO t (module, timestamp, level, message, line, srcfile) VALUES ('Send', 5000000000, 3, "
        "'100%d', -1, 'CVsoap');");
    for (const LogRecord& record : {LogRecord{"a'b", 1, 1, "", 1, ""}, LogRecord{"", 1, 1, "'", 1, ""},
                                    LogRecord{"", 1, 1, "", 1, "'"}}) {
        EXPECT_THROW(InsertLogRecordAsText("t", record), CVDBProcessorFatalException);
    }
}

TEST(LogStatements, NameTablesSafely) {
    const struct {
        const char* module;
        const char* table;
    } cases[] = {
        {"SOAP", "log_soap"},
        {"Email Gateway", "log_email_gateway"},
        {"x'; DROP TABLE metatable; --", "log_x___drop_table_metatable____"},
        {"caf\xC3\xA9", "log_caf__"},
        {"metatable", "log_metatable"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(LogTableName(c.module), c.table);
        EXPECT_TRUE(IsLogTableName(c.table));
    }
    for (const char* text : {"", "2x", "a b", "a;b", "a'b", "main.t"})
        EXPECT_FALSE(IsLogTableName(text)) << text;
}
