#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::HasSubstr;

namespace {

void StoreSample(const OperatorSite& site) {
    site.Store({{.module = "", .timestamp = kEntryTime, .level = 3, .message = "started"},
                {.module = "Send", .timestamp = kEntryTime + 1, .level = 5, .message = "it's 100% lost\n"},
                {.module = "Parse", .timestamp = kEntryTime + 2, .level = 1, .message = "deep"},
                {.module = "Send", .timestamp = kEntryTime + 86400, .level = 4, .message = "slow"},
                {.module = "Send", .timestamp = kEntryTime + 86400, .level = 4, .message = "slow"}});
}

std::string Query(const OperatorSite& site, std::vector<std::string> options, const char* command = "query") {
    options.insert(options.begin(), {command, "--db", site.Database(), "--module", "SOAP"});
    return Outcome(site.Logs(options));
}

const std::string kStarted = "02/01/2024 09:05:03 SOAP [INFO] started\n";
const std::string kLost = "02/01/2024 09:05:04 SOAP.Send [ERROR] it's 100% lost\n";
const std::string kDeep = "02/01/2024 09:05:05 SOAP.Parse [TRACE] deep\n";
const std::string kSlow = "02/02/2024 09:05:03 SOAP.Send [WARN] slow\n";

}  // namespace

TEST(QueryCommand, PrintsTheEntriesThatPassEveryFilter) {
    const OperatorSite site;
    StoreSample(site);
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, kStarted + kLost + kDeep + kSlow + kSlow},
        {{"--level", "warn"}, kLost + kSlow + kSlow},
        {{"--sub", "Parse", "--sub", ""}, kStarted + kDeep},
        {{"--grep", "it's 100\\%%"}, ""},
        {{"--grep", "IT'S 100%"}, kLost},
        {{"--grep", "^s.*(ed|ow)"}, kStarted + kSlow + kSlow},
        {{"--time", "02/02/%"}, kSlow + kSlow},
        {{"--since", "2024-02-01 09:05:05"}, kDeep + kSlow + kSlow},
        {{"--since", "@1706778304", "--level", "error", "--sub", "Send"}, kLost},
        {{"--newest", "--limit", "3"}, kSlow + kSlow + kDeep},
        {{"--newest", "--limit", "1", "--offset", "3"}, kLost},
        {{"--by-level"}, kDeep + kStarted + kSlow + kSlow + kLost},
        {{"--by-module", "--limit", "2"}, kStarted + kDeep},
    };
    for (const auto& [options, lines] : cases) {
        const std::string expected = lines.empty() ? "1 cvlogs: no such entries\n" : "0 " + lines;
        EXPECT_EQ(Query(site, options), expected) << testing::PrintToString(options);
    }
    EXPECT_THAT(Query(site, {"--time", "02/02"}), HasSubstr("a time pattern stands for the whole text"));
}

TEST(QueryCommand, PrintsEveryColumnForOtherPrograms) {
    const OperatorSite site;
    site.Store({{.module = "S\t",
                 .timestamp = kEntryTime,
                 .level = 5,
                 .message = "\"a\"\n\xFF",
                 .sourceFile = "s.c"}});
    EXPECT_EQ(
        Query(site, {"--json"}),
        R"(0 {"id":1,"module":"S\t","timestamp":1706778303,"level":5,"message":"\"a\"\n\ufffd","line":-1,)"
        R"("srcfile":"s.c","tempcol":"02/01/2024 09:05:03"})"
        "\n");
    EXPECT_EQ(Query(site, {"--tsv"}),
              "0 id\tmodule\ttimestamp\tlevel\tmessage\tline\tsrcfile\ttempcol\n"
              "1\tS\\t\t1706778303\t5\t\"a\"\\n\xFF\t-1\ts.c\t02/01/2024 09:05:03\n");
}

TEST(QueryCommand, CountsEntriesThatAreAlike) {
    const OperatorSite site;
    StoreSample(site);
    EXPECT_EQ(Query(site, {"--level", "warn"}, "count"), "0       2 02/02/2024 09:05:03 [WARN] slow\n");
    EXPECT_EQ(Query(site, {"--time", "02/02%", "--json"}, "count"),
              "0 {\"entry_time\":\"02/02/2024 09:05:03\",\"message\":\"slow\",\"level\":4,\"records\":2}\n");
    EXPECT_EQ(Query(site, {"--level", "fatal"}, "count"), "1 cvlogs: no such entries\n");
}

TEST(QueryCommand, ShowsControlCharactersOnATerminalOnly) {
    const OperatorSite site;
    site.Store({{.timestamp = kEntryTime, .level = 5, .message = "\x1b[2J\xC3\xA9\a"}});
    const std::string arguments = "query --module SOAP --db " + site.Database();
    EXPECT_THAT(site.LogsOnTerminal(arguments).output, HasSubstr("[ERROR] <ESC>[2J\xC3\xA9<BEL>\r\n"));
    EXPECT_THAT(site.LogsOnTerminal(arguments + " --tsv").output, HasSubstr("\t<ESC>[2J\xC3\xA9<BEL>\t"));
    EXPECT_THAT(Query(site, {}), HasSubstr("[ERROR] \x1b[2J\xC3\xA9\a\n"));
}

TEST(QueryCommand, UsesColoursAndAPagerOnATerminalOnly) {
    const OperatorSite site;
    StoreSample(site);
    const std::string arguments = "query --level error --module SOAP --db " + site.Database();
    const auto coloured = site.LogsOnTerminal(arguments, {"PAGER=sed s/^/paged:/"});
    EXPECT_THAT(coloured.output,
                HasSubstr("paged:\x1b[31m02/01/2024 09:05:04 SOAP.Send [ERROR] it's 100% lost\x1b[0m"));
    EXPECT_THAT(
        site.LogsOnTerminal(arguments + " --no-pager", {"PAGER=sed s/^/paged:/", "NO_COLOR=1"}).output,
        testing::StartsWith("02/01/2024"));
    EXPECT_EQ(Query(site, {"--level", "error", "--color", "always"}),
              "0 \x1b[31m" + kLost.substr(0, kLost.size() - 1) + "\x1b[0m\n");
}

TEST(QueryCommand, FindsTheDatabaseByTheConfiguration) {
    const OperatorSite site(
        "[main]\nwriter=sqlite\n[SOAP]\ndbfilename={SITE}/logs/events.sdb\n[CLI]\nwriter=file\n");
    StoreSample(site);
    const auto query = [&](const char* module) {
        return Outcome(
            site.Logs({"query", "--config-dir", site.Config(), "--module", module, "--level", "error"}));
    };
    EXPECT_EQ(query("SOAP"), "0 " + kLost);
    EXPECT_THAT(query("CLI"), HasSubstr("no log file " + site.Files() / "logs/cli_log.txt"));
    EXPECT_THAT(query("LDAP"), HasSubstr("has no section [LDAP]"));
}

TEST(QueryCommand, CreatesNothingAndSaysWhatIsWrong) {
    const OperatorSite site;
    site.Files().Write("notes.txt", "no database at all");
    const std::string before = site.Listing();
    const std::pair<std::string, const char*> cases[] = {
        {site.Files() / "logs/none.sdb", "No such file or directory"},
        {site.Files() / "none/none.sdb", "No such file or directory"},
        {site.Files() / "logs", "no regular file"},
        {site.Files() / "notes.txt", "file is not a database"},
    };
    for (const auto& [database, reason] : cases) {
        const auto result = site.Logs({"query", "--db", database, "--module", "SOAP"});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(result.errors, HasSubstr(reason));
    }
    EXPECT_EQ(site.Listing(), before);
}

TEST(QueryCommand, TellsAUserWhoMayNotReadWhatIsNeeded) {
    const OperatorSite site;
    StoreSample(site);
    chmod(site.Files().Path().c_str(), 0755);
    const std::vector<std::string> arguments = {"query", "--db", site.Database(), "--module", "SOAP"};
    chmod((site.Files() / "logs").c_str(), 0555);
    EXPECT_THAT(AsNobody(CVLOGS_PROGRAM, arguments).errors, HasSubstr("must be allowed to write the file"));
    chmod(site.Database().c_str(), 0);
    EXPECT_THAT(AsNobody(CVLOGS_PROGRAM, arguments).errors, HasSubstr("Permission denied"));
    chmod((site.Files() / "logs").c_str(), 0755);
}
