#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "process/DeliveryEntry.h"
#include "syslib/CVsysEventLogFileWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TempDir.h"

// The files of deploy/ for mtail, Prometheus and lnav, each run by its program on a journal as the front end
// writes it. They come from packages of script/bootstrap's group "monitoring".

using namespace quorbel;

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kDeploy = DEPLOY_DIR;

Delivery Request(const char* to, Outcome outcome) {
    Delivery delivery;
    delivery.at = std::chrono::system_clock::from_time_t(1795273500) + milliseconds(123);
    delivery.id = "7f3a9c21";
    delivery.method = "SendStdMessage";
    delivery.to = to;
    delivery.outcome = outcome;
    delivery.client = "10.0.0.5";
    if (outcome == Outcome::Refused) {
        delivery.fault = "2004 Missing URL";
        return delivery;
    }
    delivery.server = "http://pager1:8080";
    delivery.duration = milliseconds(12);
    if (outcome == Outcome::Answered) delivery.httpStatus = 200;
    if (outcome == Outcome::NotConnected) delivery.error = "Couldn't connect to server";
    return delivery;
}

std::vector<Delivery> SomeRequests() {
    Delivery second = Request("night", Outcome::Answered);
    second.viaSecondary = true;
    second.server = "https://pager2.example";
    second.httpStatus = 503;
    second.firstError = "Couldn't connect to server";
    // What a client sends is no field: neither an outcome nor a time.
    const char* const hostile = "x\" outcome=unknown server=http://evil via=primary http=500 ms=99 \\";
    Delivery cut = Request(hostile, Outcome::Answered);
    cut.cut = "szRecipientName";
    return {Request("night", Outcome::Sending),    Request("night", Outcome::Answered), second, cut,
            Request("day", Outcome::NotConnected), Request("", Outcome::Refused)};
}

struct Journal {
    Journal() {
        CVsysEventLogFileWriter log("test");
        log.setProperty("filePath", path);
        log.setProperty("autoAppend", "1");
        for (const Delivery& delivery : SomeRequests()) {
            log.DoWork("Deliveries", static_cast<unsigned>(LevelOf(delivery)), DeliveryEntry(delivery), -1,
                       nullptr, 0);
        }
    }

    ProgramResult Run(const std::string& program, const std::vector<std::string>& arguments) const {
        return RunProgram({.program = program,
                           .arguments = arguments,
                           .environment = {"HOME=" + dir.Path(), "PATH=/usr/bin:/bin", "TERM=dumb"},
                           .directory = dir.Path()});
    }

    TempDir dir;
    const std::string path = dir / "deliveries_log.txt";
};

bool IsMissing(const std::string& program) {
    return access(program.c_str(), X_OK) != 0;
}

}  // namespace

TEST(Monitoring, MtailCountsRequestsAndNothingThatClientsInvent) {
    const std::string mtail = "/usr/bin/mtail";
    if (IsMissing(mtail)) GTEST_SKIP() << "script/bootstrap monitoring installs it";
    const Journal journal;
    const auto metrics = journal.Run(mtail, {"--one_shot", "--one_shot_format=prometheus", "--progs",
                                             kDeploy + "/quorbel.mtail", "--logs", journal.path});
    ASSERT_EQ(metrics.exitStatus, 0) << metrics.errors;
    for (
        const char* line : {
            "quorbel_requests_total{method=\"SendStdMessage\",outcome=\"answered\",prog=\"quorbel.mtail\"} 3\n",
            "outcome=\"not-connected\",prog=\"quorbel.mtail\"} 1\n",
            "outcome=\"refused\",prog=\"quorbel.mtail\"} 1\n",
            "server=\"https://pager2.example\",via=\"secondary\"} 1\n",
            "server=\"http://pager1:8080\",via=\"primary\"} 2\n",
            "server=\"https://pager2.example\",status=\"503\"} 1\n",
            "quorbel_request_seconds_count{prog=\"quorbel.mtail\"} 4\n",
            "quorbel_request_seconds_bucket{prog=\"quorbel.mtail\",le=\"0.01\"} 0\n",
            "quorbel_request_seconds_bucket{prog=\"quorbel.mtail\",le=\"0.025\"} 4\n",
            "quorbel_cut_values_total{prog=\"quorbel.mtail\"} 1\n",
        }) {
        EXPECT_THAT(metrics.output, HasSubstr(line));
    }
    EXPECT_THAT(metrics.output, Not(HasSubstr("evil")));
    EXPECT_THAT(metrics.output, Not(HasSubstr("sending")));
    EXPECT_THAT(metrics.output, Not(HasSubstr("unknown")));
}

TEST(Monitoring, PrometheusTakesTheRulesAndRaisesTheAlerts) {
    const std::string promtool = "/usr/bin/promtool";
    if (IsMissing(promtool)) GTEST_SKIP() << "script/bootstrap monitoring installs it";
    const TempDir dir;
    dir.Write("quorbel.rules.yml", ReadFile(kDeploy + "/quorbel.rules.yml"));
    const std::string test = dir.Write("rules_test.yml", ReadFile(MONITORING_DIR "/rules_test.yml"));
    const auto checked =
        RunProgram({.program = promtool, .arguments = {"check", "rules", dir / "quorbel.rules.yml"}});
    EXPECT_EQ(checked.exitStatus, 0) << checked.output << checked.errors;
    const auto tested = RunProgram({.program = promtool, .arguments = {"test", "rules", test}});
    EXPECT_EQ(tested.exitStatus, 0) << tested.output << tested.errors;
}

TEST(Monitoring, EveryMetricOfTheRulesIsOneThatMtailMakes) {
    const std::string program = ReadFile(kDeploy + "/quorbel.mtail");
    const std::string rules = ReadFile(kDeploy + "/quorbel.rules.yml");
    int used = 0;
    for (std::size_t at = 0; (at = rules.find("quorbel_", at)) != rules.npos; ++used) {
        const std::size_t end = rules.find_first_not_of("abcdefghijklmnopqrstuvwxyz_", at);
        std::string metric = rules.substr(at, end - at);
        if (metric.ends_with("_bucket")) metric.resize(metric.size() - 7);
        EXPECT_THAT(program, testing::ContainsRegex("(counter|histogram) " + metric + " "));
        at = end;
    }
    EXPECT_GT(used, 5);
}

TEST(Monitoring, LnavShowsLevelsAndFields) {
    const std::string lnav = "/usr/bin/lnav";
    if (IsMissing(lnav)) GTEST_SKIP() << "script/bootstrap monitoring installs it";
    const Journal journal;
    journal.Run(lnav, {"-i", kDeploy + "/quorbel.lnav.json"});
    const auto shown = journal.Run(
        lnav, {"-n", "-c", ";SELECT log_level, method, server, via, outcome, http, ms FROM quorbel_log", "-c",
               ":write-csv-to -", journal.path});
    EXPECT_EQ(shown.output,
              "log_level,method,server,via,outcome,http,ms\n"
              "debug,SendStdMessage,http://pager1:8080,primary,sending,<NULL>,12\n"
              "info,SendStdMessage,http://pager1:8080,primary,answered,200,12\n"
              "warning,SendStdMessage,https://pager2.example,secondary,answered,503,12\n"
              "info,SendStdMessage,http://pager1:8080,primary,answered,200,12\n"
              "error,SendStdMessage,http://pager1:8080,primary,not-connected,<NULL>,12\n"
              "warning,SendStdMessage,<NULL>,<NULL>,refused,<NULL>,<NULL>\n")
        << shown.errors;
}
