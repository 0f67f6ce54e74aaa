#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <regex>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::HasSubstr;
using testing::Not;

namespace {

ProgramResult Check(const OperatorSite& site) {
    return site.Logs({"check", "--config-dir", site.Config()});
}

/// The report without its first line, which names the user.
std::string Report(const OperatorSite& site) {
    std::string text = Check(site).output;
    text.erase(0, text.find('\n') + 2);
    return std::regex_replace(text, std::regex(site.Files().Path()), "SITE");
}

}  // namespace

TEST(CheckCommand, ShowsWhatEveryModuleMakesOfTheFile) {
    const OperatorSite site(
        "[main]\nlevel=error\nnumFiles=3\n\n[SOAP]\nLEVEL=debug\n\n[CLI]\nwriter=sqlite\n"
        "dbfilename={SITE}/logs/cli.sdb\n\n[Messenger]\nwriter=common\n\n[common]\nfilePath={SITE}/logs/"
        "all.txt\n"
        "bytesPerFiles=100\nperProcessFile=1\n");
    site.Files().Write("logs/soap_log.txt", "12345");
    EXPECT_EQ(
        Report(site),
        "SOAP\n    writer    file\n    level     DEBUG\n    file      SITE/logs/soap_log.txt (5 bytes)\n"
        "    archives  3, one at every 204800 bytes\n    ready     yes\n\n"
        "CLI\n    writer    sqlite\n    level     ERROR\n    database  SITE/logs/cli.sdb\n    ready     "
        "yes\n\n"
        "Messenger\n    writer    common\n    level     ERROR\n    file      SITE/logs/all.txt\n"
        "              entries go to MODULE.txt beside it\n    archives  3, one at every 100 bytes\n"
        "    ready     yes\n\n"
        "common\n    writer    file\n    level     ERROR\n    file      SITE/logs/all.txt\n"
        "              entries go to MODULE.txt beside it\n    archives  3, one at every 100 bytes\n"
        "    ready     yes\n");
    EXPECT_EQ(Check(site).exitStatus, 0);
}

TEST(CheckCommand, SaysWhyALogIsNotReady) {
    const std::pair<const char*, const char*> cases[] = {
        {"writer=fiel", "no: there is no writer \"fiel\""},
        {"filePath={SITE}/none/a.txt", "no: takes no new files: SITE/none: No such file or directory"},
        {"filePath={SITE}/logs", "no: SITE/logs: is a directory"},
        {"writer=sqlite", "no: there is no dbfilename"},
        {"writer=sqlite\ndbfilename={SITE}/none/a.sdb", "no: takes no new files: SITE/none"},
        {"writer=sqlite\ndbfilename={SITE}/config/dir", "no: SITE/config/dir: is not a database"},
        // The path before one that cannot be used stays in force.
        {"filePath={SITE}/logs/a.txt\nfilePath={SITE}/none/a.txt", "file      SITE/logs/a.txt\n"},
    };
    for (const auto& [section, reason] : cases) {
        const OperatorSite site("[SOAP]\n" + std::string(section) + "\n[CLI]\n");
        const bool ready = std::string(reason).starts_with("file");
        EXPECT_THAT(Report(site), HasSubstr(reason));
        EXPECT_EQ(Check(site).errors, ready ? "" : "cvlogs: not ready: SOAP\n");
        EXPECT_EQ(Check(site).exitStatus, ready ? 0 : 1);
    }
}

TEST(CheckCommand, WarnsOfWhatIsLikelyAMistake) {
    const std::pair<std::string, const char*> cases[] = {
        {"[SOAP]\nlevel = info\n", "[SOAP] the key \"level \" ends in a blank; no program finds it"},
        {"[main]\nlevel=verbose\n", "[main] level=verbose names no level; warn is taken"},
        {"[SOAP]\nwriter=fiel\n", "[SOAP] writer=fiel names no writer; nothing is logged"},
        {"[SOAP]\nautoAppend=0\n", "[SOAP] autoAppend=0 switches it on, as every value does"},
        {"[SOAP]\ntruncate=1\n", "[SOAP] truncate=1 empties the database whenever a program starts"},
        {"[SOAP]\nnumFiles=many\n", "[SOAP] numFiles=many is not taken"},
        {"[SOAP]\nfilePath=logs/a.txt\n", "[SOAP] filePath=logs/a.txt is relative"},
        {"[SOAP]\nlevle=debug\n", "[SOAP] no program knows the key \"levle\""},
        {"[SOAP]\nlevel=debug\nLevel=info\n", "[SOAP] has the key \"Level\" more than once"},
        {"[SOAP]\n[soap]\n", "[soap] stands there twice; programs find the first one only"},
        {"[SAOP]\n", "[SAOP] is no module of the system"},
        {"[SOAP\n", "[SOAP lacks its \"]\"; no program finds the section"},
        {"[SOAP]\nfilePath=/" + std::string(501, 'x') + "\n", "line 2 is longer than 511 characters"},
    };
    for (const auto& [text, warning] : cases) {
        const OperatorSite site(text);
        EXPECT_THAT(Report(site), HasSubstr("warning: " + std::string(warning)));
    }
}

TEST(CheckCommand, DoesNotWarnOfWhatIsMeant) {
    const OperatorSite site(
        "# a "
        "comment\n[main]\nlevel=WARNING\nautoAppend=1\n[SOAP]\nwriter=Common\ntruncate=0\n[common]\nnumFiles="
        "7\n"
        "filePath=/" +
        std::string(499, 'x') + "\n");
    EXPECT_THAT(Check(site).output, Not(HasSubstr("warning")));
}

TEST(CheckCommand, ChangesNothing) {
    const OperatorSite site(
        "[SOAP]\nwriter=sqlite\ndbfilename={SITE}/logs/"
        "a.sdb\ntruncate=1\n[CLI]\n[Messenger]\nwriter=common\n");
    site.Files().Write("logs/dead.txt.lock", "");
    site.Store({{.level = 3, .message = "kept"}});
    const std::string before = site.Listing();
    EXPECT_EQ(Check(site).exitStatus, 0);
    EXPECT_EQ(site.Logs({"check", "--config-dir", site.Files() / "none"}).exitStatus, 1);
    EXPECT_EQ(site.Listing(), before);
}

TEST(CheckCommand, AnswersForTheUserWhoAsks) {
    const OperatorSite site("[SOAP]\n");
    site.Files().Write("logs/soap_log.txt", "");
    chmod(site.Files().Path().c_str(), 0755);
    chmod((site.Files() / "logs").c_str(), 0555);
    EXPECT_THAT(AsNobody(CVLOGS_PROGRAM, {"check", "--config-dir", site.Config()}).output,
                HasSubstr("no: takes no new files: " + site.Files() / "logs: Permission denied"));
    chmod((site.Files() / "logs").c_str(), 0755);
}
