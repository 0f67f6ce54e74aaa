#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

TEST(Usage, EndsWithTwoForWrongUsageAndLeavesStandardOutputEmpty) {
    const OperatorSite site;
    const std::vector<std::string> cases[] = {
        {},
        {"ask"},
        {"query", "--module", "SOAP"},
        {"query", "--db", "x", "--config-dir", "y", "--module", "SOAP"},
        {"query", "--db", "x"},
        {"query", "--file", "x", "--db", "y", "--module", "SOAP"},
        {"query", "--file", "x", "--follow", "--newest"},
        {"query", "--file", "x", "--color", "red"},
        {"query", "--db", "", "--module", "SOAP"},
        {"query", "--db", "x", "--module", "SOAP", "--level", "loud"},
        {"query", "--db", "x", "--module", "SOAP", "--since", "soon"},
        {"query", "--db", "x", "--module", "SOAP", "--limit", "-1"},
        {"query", "--db", "x", "--module", "SOAP", "--json", "--tsv"},
        {"query", "--db", "x", "--module", "SOAP", "--newest", "--by-level"},
        {"truncate", "--db", "x"},
        {"drop", "--db", "x", "SOAP"},
        {"check"},
        {"write", "--config-dir", site.Config(), "--module", "A]\n[B", "--level", "info", "text"},
    };
    for (const auto& arguments : cases) {
        const auto result = site.Logs(arguments);
        EXPECT_EQ(result.exitStatus, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("cvlogs: "));
    }
    EXPECT_EQ(site.Messages({"get", "ten"}).exitStatus, 2);
    EXPECT_EQ(site.Messages({"--config-dir", "", "list"}).exitStatus, 2)
        << "must not mean the fixed directory";
}

TEST(Usage, TellsHelpAndVersionForEveryCommand) {
    const OperatorSite site;
    for (const char* command :
         {"query", "follow", "deliveries", "count", "modules", "truncate", "drop", "check", "write"}) {
        const auto help = site.Logs({command, "--help"});
        EXPECT_EQ(help.exitStatus, 0) << command;
        EXPECT_THAT(help.output, testing::HasSubstr(std::string("Usage: cvlogs ") + command));
        EXPECT_EQ(Outcome(site.Logs({command, "--version"})), Outcome(site.Logs({"--version"}))) << command;
    }
    EXPECT_THAT(Outcome(site.Messages({"--version"})), testing::MatchesRegex("0 cvmessages [0-9.]+\n"));
}

TEST(Usage, ReportsOutputThatCannotBeWritten) {
    const auto result = RunProgram(
        {.program = "/bin/sh", .arguments = {"-c", std::string(CVLOGS_PROGRAM) + " --help >/dev/full"}});
    EXPECT_EQ(Outcome(result), "1 cvlogs: cannot write to standard output: No space left on device\n");
}
