#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "syslib/CVLogSQLiteProcessor.h"
#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::HasSubstr;

namespace {

const std::string kOdd = "it's [odd]; DROP TABLE metatable; --";

void StoreTwoModules(const OperatorSite& site) {
    CVLogSQLiteProcessor database(site.Database(), /*create=*/true);
    database.Insert("SOAP", {.level = 3, .message = "one"});
    database.Insert(kOdd, {.level = 3, .message = "two"});
}

std::string CvLogs(const OperatorSite& site, std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--db", site.Database()});
    return Outcome(site.Logs(arguments));
}

}  // namespace

TEST(DatabaseCommands, DropOneModuleAndLeaveTheOthers) {
    const OperatorSite site;
    StoreTwoModules(site);
    EXPECT_EQ(CvLogs(site, {"modules"}), "0 SOAP\n" + kOdd + "\n");
    EXPECT_THAT(CvLogs(site, {"drop", "soap", "--yes"}), HasSubstr("1 cvlogs: no module \"soap\""));
    EXPECT_EQ(CvLogs(site, {"drop", kOdd, "--yes"}), "0 " + kOdd + " dropped\n");
    EXPECT_EQ(CvLogs(site, {"modules"}), "0 SOAP\n");
    EXPECT_THAT(CvLogs(site, {"query", "--module", "SOAP"}), HasSubstr("one"));
}

TEST(DatabaseCommands, TruncateKeepsTheModules) {
    const OperatorSite site;
    StoreTwoModules(site);
    EXPECT_EQ(CvLogs(site, {"truncate", "--yes"}), "0 SOAP emptied\n" + kOdd + " emptied\n");
    EXPECT_EQ(CvLogs(site, {"query", "--module", kOdd}), "1 cvlogs: no such entries\n");
    EXPECT_EQ(CvLogs(site, {"modules"}), "0 SOAP\n" + kOdd + "\n");
}

TEST(DatabaseCommands, TakeNoChoiceBetweenSeveralDatabases) {
    const OperatorSite site(
        "[SOAP]\nwriter=sqlite\ndbfilename={SITE}/logs/events.sdb\n[CLI]\nwriter=sqlite\ndbfilename={SITE}/"
        "b.sdb\n");
    StoreTwoModules(site);
    const auto truncate = site.Logs({"truncate", "--yes", "--config-dir", site.Config()});
    EXPECT_EQ(truncate.exitStatus, 1);
    EXPECT_THAT(truncate.errors, HasSubstr("choose one with --db"));
    EXPECT_EQ(Outcome(site.Logs({"drop", "SOAP", "--yes", "--config-dir", site.Config()})),
              "0 SOAP dropped\n");
}
