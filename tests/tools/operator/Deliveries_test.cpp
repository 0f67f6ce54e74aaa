#include "tools/cvlogs/Deliveries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

std::string Entry(const char* level, const std::string& fields) {
    return std::string("11/21/2026 17:05:00 Deliveries [") + level + "] at=2026-11-21T17:05:00.123+01:00 " +
           fields + "\n";
}

std::string Journal() {
    return Entry(
               "INFO",
               "id=a1 method=SendStdMessage to=night server=http://pager1:8080 via=primary outcome=answered "
               "http=200 ms=12 bytes=31 client=10.0.0.5 reply=\"OK job 100001.1 queued for night\"") +
           Entry("DEBUG", "id=a2 method=SendStdMessage to=night server=http://pager1:8080 outcome=sending") +
           Entry(
               "WARN",
               "id=a2 method=SendStdMessage to=night server=http://pager2:8080 via=secondary outcome=answered "
               "http=200 ms=30 client=10.0.0.5 first=\"Couldn't connect to server\"") +
           Entry("WARN", "id=a3 method=AddGroup outcome=refused client=10.0.0.6 fault=\"2004 Missing URL\"") +
           Entry("ERROR",
                 "id=a4 method=SendStdMessage to=\"O\\\"B\\n\" server=http://pager1:8080 via=primary "
                 "outcome=not-connected ms=2000 client=10.0.0.6 error=\"Couldn't connect to server\"") +
           Entry("DEBUG", "id=a5 method=DelGroup to=day server=http://pager1:8080 outcome=sending");
}

struct JournalSite {
    std::string Show(std::vector<std::string> options) const {
        options.insert(options.begin(), {"deliveries", "--config-dir", site.Config()});
        return Outcome(site.Logs(options));
    }
    /// The ids of the requests that are shown.
    std::string Ids(std::vector<std::string> options) const {
        options.emplace_back("--json");
        std::string ids;
        const std::string json = Show(options);
        constexpr std::string_view kKey = "\"id\":\"";
        for (std::size_t at = 0; (at = json.find(kKey, at)) != json.npos; at += kKey.size()) {
            ids += json.substr(at + kKey.size(), 2) + " ";
        }
        return ids;
    }

    JournalSite() { site.Files().Write("logs/deliveries.txt", Journal()); }
    OperatorSite site{"[main]\n[Deliveries]\nfilePath={SITE}/logs/deliveries.txt\n"};
};

}  // namespace

TEST(Logfmt, ReadsWhateverStandsThere) {
    EXPECT_THAT(Logfmt("a=1 b=\"two \\\"x\\\" \\\\ \\n\\t\\x1b\" c= word d=\"\" e=x=y\n").Fields(),
                ElementsAre(Pair("a", "1"), Pair("b", "two \"x\" \\ \n\t\x1b"), Pair("c", ""), Pair("d", ""),
                            Pair("e", "x=y")));
    for (const char* text : {"", " ", "=", "=\"", "\"", "x", "=a ="})
        EXPECT_THAT(Logfmt(text).Fields(), ElementsAre());
    EXPECT_THAT(Logfmt("a=\"open \\").Fields(), ElementsAre(Pair("a", "open ")));
    EXPECT_THAT(Logfmt("a=\"\\xzz\\x4").Fields(), ElementsAre(Pair("a", "xzz\x04")));
}

TEST(Deliveries, ShowsWhatBecameOfEachRequest) {
    const JournalSite journal;
    const std::string table = journal.Show({});
    EXPECT_THAT(table, testing::StartsWith("0 TIME                 OUTCOME"));
    EXPECT_THAT(table,
                HasSubstr("2026-11-21 17:05:00  answered        200      12  SendStdMessage        night"));
    EXPECT_THAT(table, HasSubstr("10.0.0.5         OK job 100001.1 queued for night\n"));
    EXPECT_THAT(table, HasSubstr("by the second server; first: Couldn't connect to server\n"));
    EXPECT_THAT(table, HasSubstr("10.0.0.6         2004 Missing URL\n"));
    EXPECT_THAT(table, HasSubstr("sending"));
    EXPECT_THAT(table, HasSubstr("O\"B<NL>")) << "one line";

    journal.site.Messages({"--config-dir", journal.site.Config(), "load",
                           journal.site.Files().Write("m.h", "#define A 2004 /* Give szURL */\n")});
    EXPECT_THAT(journal.Show({"--failed"}), HasSubstr("2004 Missing URL (Give szURL)\n"));
}

TEST(Deliveries, AreThoseOfTheSiteThatTheProgramIsInstalledIn) {
    const JournalSite journal;
    const std::string program = journal.site.Files() / "bin/cvlogs";
    std::filesystem::create_directory(journal.site.Files() / "bin");
    std::filesystem::copy_file(CVLOGS_PROGRAM, program);
    EXPECT_THAT(Outcome(RunProgram({.program = program, .arguments = {"deliveries", "--to", "O*"}})),
                HasSubstr("  not-connected "));
    EXPECT_THAT(Outcome(RunProgram({.program = program, .arguments = {"query", "--module", "Other"}})),
                HasSubstr("1 cvlogs: "));
}

TEST(Deliveries, ShowsOnlyWhatIsWanted) {
    const JournalSite journal;
    EXPECT_EQ(journal.Ids({}), "a1 a2 a3 a4 a5 ");
    EXPECT_EQ(journal.Ids({"--failed"}), "a3 a4 a5 ");
    EXPECT_EQ(journal.Ids({"--outcome", "refused"}), "a3 ");
    EXPECT_EQ(journal.Ids({"--to", "night"}), "a1 a2 ");
    EXPECT_EQ(journal.Ids({"--to", "O*"}), "a4 ");
    EXPECT_EQ(journal.Ids({"--server", "pager1", "--client", "10.0.0.?"}), "a1 a4 ");
    EXPECT_EQ(journal.Ids({"--method", "AddGroup"}), "a3 ");
    EXPECT_EQ(journal.Ids({"--id", "a2"}), "a2 ");
    EXPECT_EQ(journal.Show({"--to", "nobody"}), "1 cvlogs: no such deliveries\n");
    EXPECT_EQ(journal.Show({"--since", "2026-11-21 17:05:01"}), "1 cvlogs: no such deliveries\n");
}

TEST(Deliveries, LeavesTheOldReportWhenTheNewOneCannotBeWrittenWhole) {
    const JournalSite journal;
    const std::string report = journal.site.Files().Write("web/report.html", "the old one");
    // No file may be longer than a block; without the signal a write fails, with it the program is killed in it.
    for (const char* atTheLimit : {"trap '' XFSZ", ":"}) {
        const auto result = RunProgram(
            {.program = "/bin/sh",
             .arguments = {"-c", std::string(atTheLimit) +
                                     "; ulimit -f 1; exec " CVLOGS_PROGRAM " deliveries --config-dir " +
                                     journal.site.Config() + " --html " + report}});
        EXPECT_NE(result.exitStatus, 0) << atTheLimit;
        EXPECT_EQ(ReadFile(report), "the old one") << atTheLimit;
    }
    EXPECT_EQ(journal.Show({"--html", report}), "0 ");
    EXPECT_THAT(ReadFile(report), HasSubstr("</html>"));
}

TEST(Deliveries, SumsUpByServerOutcomeAndMethod) {
    const JournalSite journal;
    EXPECT_THAT(journal.Show({"--summary"}),
                HasSubstr("      1      12      12      12  answered       SendStdMessage"));
    EXPECT_THAT(
        journal.Show({"--summary", "--json", "--failed", "--method", "SendStdMessage"}),
        "0 {\"server\":\"http://pager1:8080\",\"outcome\":\"not-connected\",\"method\":\"SendStdMessage\","
        "\"count\":1,\"p50\":2000,\"p95\":2000,\"max\":2000}\n");
    DeliveryGroup group;
    EXPECT_EQ(group.Percentile(50), std::nullopt);
    for (int number = 100; number > 0; --number) group.milliseconds.push_back(number);
    EXPECT_EQ(group.Percentile(50), 50);
    EXPECT_EQ(group.Percentile(95), 95);
    EXPECT_EQ(group.Percentile(100), 100);
    group.milliseconds = {7};
    EXPECT_EQ(group.Percentile(0), 7);
}
