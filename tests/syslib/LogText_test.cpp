#include "syslib/LogText.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

using namespace quorbel;

namespace {

// Formats on purpose that the compiler would warn of: they reach the log at run time.
std::string Build(const char* context, const char* format, int systemError, ...) {
    va_list arguments;
    va_start(arguments, systemError);
    std::string message = BuildLogMessage(context, format, systemError, arguments);
    va_end(arguments);
    return message;
}

const std::string kNoEntry = std::strerror(ENOENT);

}  // namespace

TEST(LogText, JoinsContextMessageAndSystemError) {
    EXPECT_EQ(Build("Send", "id=%d", kNoSystemError, 7), "Send id=7");
    EXPECT_EQ(Build(nullptr, "id=%d", kNoSystemError, 7), "id=7");
    EXPECT_EQ(Build("", "id=%d", kNoSystemError, 7), "id=7") << "an empty context leaves no blank";
    EXPECT_EQ(Build("Send", "id=%d", ENOENT, 7), "Send id=7 [System Library Error] " + kNoEntry);
    EXPECT_EQ(Build("", "id=%d", ENOENT, 7), "id=7 [System Library Error] " + kNoEntry);
    EXPECT_EQ(Build("100%n", "done %s", kNoSystemError, "%s%n"), "100%n done %s%n") << "the context is text";
    EXPECT_EQ(Build("Load", "at 50%", kNoSystemError), "Load at 50%") << "and so is what is no format";
}

TEST(LogText, DropsAConversionThatTheFormatLimitCutsInTwo) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string(2046, 'f') + "%d", std::string(2046, 'f')},
        {std::string(2044, 'f') + "%-5ld", std::string(2044, 'f')},
        {std::string(2045, 'f') + "%d", std::string(2045, 'f') + "7"},
        {std::string(2046, 'f') + "%%", std::string(2046, 'f')},
        {"%d" + std::string(2046, 'f') + "%d", "7" + std::string(2045, 'f')},
    };
    for (const auto& [format, message] : cases)
        EXPECT_EQ(Build(nullptr, format.c_str(), kNoSystemError, 7), message);
}

TEST(LogText, WritesTheMonthFirst) {
    std::tm local{};
    local.tm_year = 2024 - 1900;
    local.tm_mon = 1;
    local.tm_mday = 1;
    local.tm_hour = 9;
    local.tm_min = 5;
    local.tm_sec = 3;
    local.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&local);

    std::string text;
    EXPECT_EQ(FormatLogTime(seconds, &text), seconds);
    EXPECT_EQ(text, "02/01/2024 09:05:03");
    EXPECT_GT(FormatLogTime(0), seconds) << "0 means the present time";
}

TEST(LogText, LetsNoMessagePassForAnotherEntry) {
    const std::pair<const char*, const char*> cases[] = {
        {"a\n11/21/2026 17:00:00 SOAP [ERROR] forged\n", "a\n 11/21/2026 17:00:00 SOAP [ERROR] forged\n"},
        {"a\r\n11/21/2026 17:00:00", "a\r\n 11/21/2026 17:00:00"},
        {"a\n11/21/2026 17:00\n1/2/2026 17:00:00\n", "a\n11/21/2026 17:00\n1/2/2026 17:00:00\n"},
        {"\x1b[31mred\b\x7f", "\\x1b[31mred\\x08\\x7f"},
        {"over\rwritten", "over\\x0dwritten"},
        {"tab\t caf\xC3\xA9 \xFF\r\n", "tab\t caf\xC3\xA9 \xFF\r\n"},
    };
    for (const auto& [message, line] : cases) EXPECT_EQ(SafeLogText(message), line);
}
