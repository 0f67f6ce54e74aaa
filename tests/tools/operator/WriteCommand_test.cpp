#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

ProgramResult Write(const OperatorSite& site, const char* module, const char* level, const char* text) {
    return site.Logs(
        {"write", "--config-dir", site.Config(), "--module", module, "--level", level, "--", text});
}

}  // namespace

TEST(WriteCommand, WritesToWhatTheConfigurationChooses) {
    const OperatorSite site(
        "[main]\n[SOAP]\nwriter=sqlite\ndbfilename={SITE}/logs/"
        "events.sdb\n[CLI]\nlevel=warn\nautoAppend=1\n");
    site.Files().Write("config/dir", "log_dir:\t\t" + site.Files() / "elsewhere" + "\n");
    site.Files().Write("elsewhere/other", "");
    EXPECT_EQ(Outcome(Write(site, "SOAP", "info", "100% of 'it' %s%n")), "0 ");
    EXPECT_EQ(Outcome(Write(site, "CLI", "fatal", "-dash")), "0 ");
    EXPECT_THAT(Outcome(site.Logs({"query", "--db", site.Database(), "--module", "SOAP"})),
                MatchesRegex("0 .* SOAP \\[INFO\\] 100% of 'it' %s%n\n"));
    EXPECT_THAT(ReadFile(site.Files() / "elsewhere/cli_log.txt"), MatchesRegex(".* CLI \\[FATAL\\] -dash\n"))
        << "without filePath it is log_dir";
}

TEST(WriteCommand, WritesFromAWorkerThreadAsServicesDo) {
    const OperatorSite site("[main]\n[CLI]\nlevel=info\nautoAppend=1\n");
    EXPECT_EQ(Outcome(site.Logs({"write", "--worker", "--config-dir", site.Config(), "--module", "CLI",
                                 "--level", "info", "by the worker"})),
              "0 ");
    EXPECT_THAT(ReadFile(site.Files() / "logs/cli_log.txt"),
                MatchesRegex(".* CLI \\[INFO\\] by the worker\n"));
}

TEST(WriteCommand, SaysWhyNothingIsWritten) {
    const OperatorSite site(
        "[SOAP]\nlevel=error\n[CLI]\nwriter=fiel\n[LDAP]\nwriter=sqlite\n[Messenger]\nfilePath={SITE}/none/"
        "main.txt\n");
    const std::pair<const char*, const char*> cases[] = {
        {"SOAP", "not written: [SOAP] takes entries from level ERROR on"},
        {"CLI", "not written: there is no writer \"fiel\""},
        {"LDAP", "not written: there is no dbfilename"},
        {"Messenger", "/none: No such file or directory"},
    };
    for (const auto& [module, reason] : cases) {
        const auto result = Write(site, module, "warn", "text");
        EXPECT_EQ(result.exitStatus, 1) << module;
        EXPECT_THAT(result.errors, HasSubstr(reason));
    }
    EXPECT_EQ(
        site.Logs({"write", "--config-dir", "/none", "--module", "A", "--level", "info", "x"}).exitStatus, 1);
}
