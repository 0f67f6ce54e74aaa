#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/ProgramRun.h"

using namespace quorbel;

using testing::AllOf;
using testing::HasSubstr;

namespace {

/// What bash offers for the last word of a command line.
std::string Completions(const std::string& program, const std::string& words) {
    const std::string script = "source '" COMPLETION_FILE "'; COMP_WORDS=('" + program + "' " + words +
                               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _quorbel; echo \"${COMPREPLY[@]}\"";
    return RunProgram(
               {.program = "/bin/bash", .arguments = {"-c", script}, .environment = {"PATH=/usr/bin:/bin"}})
        .output;
}

}  // namespace

TEST(Completion, OffersCommandsOptionsAndValues) {
    EXPECT_EQ(Completions(CVLOGS_PROGRAM, "d"), "deliveries drop\n");
    EXPECT_EQ(Completions(CVLOGS_PROGRAM, "query --json --se"), "\n");
    EXPECT_EQ(Completions(CVLOGS_PROGRAM, "query --json --si"), "--since\n");
    EXPECT_THAT(Completions(CVLOGS_PROGRAM, "deliveries -"),
                AllOf(HasSubstr("--summary"), HasSubstr("--server")));
    EXPECT_EQ(Completions(CVLOGS_PROGRAM, "query --level wa"), "warn\n");
    EXPECT_EQ(Completions(CVMESSAGES_PROGRAM, "--config-dir /tmp g"), "get\n");
    EXPECT_EQ(Completions(CVMESSAGES_PROGRAM, "--config-dir /us"), "/usr\n");
}
