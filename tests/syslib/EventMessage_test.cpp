#include "syslib/EventMessage.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

using namespace quorbel;

namespace {

// Formats on purpose that the compiler would warn of: they reach the log at run time.
std::string Build(const char* context, const char* format, int systemError, ...) {
    va_list arguments;
    va_start(arguments, systemError);
    std::string message = BuildEventMessage(context, format, systemError, arguments);
    va_end(arguments);
    return message;
}

const std::string kNoEntry = std::strerror(ENOENT);

}  // namespace

TEST(EventMessage, JoinsContextMessageAndSystemError) {
    EXPECT_EQ(Build("Send", "id=%d", kNoSystemError, 7), "Send id=7");
    EXPECT_EQ(Build(nullptr, "id=%d", kNoSystemError, 7), "id=7");
    EXPECT_EQ(Build("", "id=%d", kNoSystemError, 7), "id=7") << "an empty context leaves no blank";
    EXPECT_EQ(Build("Send", "id=%d", ENOENT, 7), "Send id=7 [System Library Error] " + kNoEntry);
    EXPECT_EQ(Build("", "id=%d", ENOENT, 7), "id=7 [System Library Error] " + kNoEntry);
}

TEST(EventMessage, TakesPercentSignsOfTheContextAsText) {
    EXPECT_EQ(Build("100%n", "done %s", kNoSystemError, "%s%n"), "100%n done %s%n");
}

TEST(EventMessage, CutsTheExpandedMessageAt2047) {
    const std::string body(3000, 'b');
    EXPECT_EQ(Build(nullptr, "%s\n", kNoSystemError, body.c_str()), body.substr(0, 2047));
}

TEST(EventMessage, DropsAConversionThatTheFormatLimitCutsInTwo) {
    const struct {
        std::string format;
        std::string message;
    } cases[] = {
        {std::string(2046, 'f') + "%d", std::string(2046, 'f')},
        {std::string(2044, 'f') + "%-5ld", std::string(2044, 'f')},
        {std::string(2045, 'f') + "%d", std::string(2045, 'f') + "7"},
        {std::string(2046, 'f') + "%%", std::string(2046, 'f')},
        {"%d" + std::string(2046, 'f') + "%d", "7" + std::string(2045, 'f')},
    };
    for (const auto& c : cases) EXPECT_EQ(Build(nullptr, c.format.c_str(), kNoSystemError, 7), c.message);
}

TEST(EventMessage, TakesAFormatThatCannotBeExpandedAsText) {
    EXPECT_EQ(Build("Load", "at 50%", kNoSystemError), "Load at 50%");
}

TEST(EventMessage, ShowsTheKernelsThreadId) {
    EXPECT_EQ(WithThreadId("started"), "[TID:" + std::to_string(gettid()) + "] started");
}
