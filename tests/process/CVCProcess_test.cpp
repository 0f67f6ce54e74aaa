#include "process/CVCProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "process/CVCSoapProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A process that keeps what it was told to show.
class ShowingProcess : public virtual CVCProcess {
public:
    void ShowResult(std::string_view text, std::string_view code) override {
        shown.push_back(std::string(code) + ": " + std::string(text));
    }
    void ShowReply(std::string_view text) override { shown.push_back(std::string(text)); }

    std::vector<std::string> shown;
};

/// The administration process with the outcomes kept.
class ShowingAdministration : public CVCCoradmProcess, public ShowingProcess {
public:
    using CVCCoradmProcess::CVCCoradmProcess;
};

class ShowingMessaging : public CVCCommandProcess {
public:
    using CVCCommandProcess::CVCCommandProcess;
    void ShowResult(std::string_view, std::string_view) override {}
    void ShowReply(std::string_view) override {}
};

AdministrationRequest Members(AdministrationParameters& parameters, std::vector<std::string> names) {
    parameters.Set(Slot::CommandWord, "addrecvtogrp");
    parameters.memberNames = std::move(names);
    return {&parameters, &g_tAdminInfo, &g_tDept, &g_tUser, &g_tUserGroup, &g_tSchd};
}

}  // namespace

TEST(CVCProcess, FailureWithoutTextIsReportedFromTheCatalogueIfThereIsOne) {
    TempDir dir;
    const auto shownWithout = [](const std::string& directory) {
        CVMessageManager::GetDBFilePath(directory);  // decides for the rest of a process
        ShowingProcess process;
        CommandParameters command;
        std::string copy = "old";
        if (process.Send(command, "", "", &copy) != -1 || copy != "") throw std::logic_error("sent");
        return process.shown;
    };
    EXPECT_EQ(InChildProcess([&] {
                  if (shownWithout(dir.Path()) != std::vector<std::string>{""})
                      throw std::logic_error("shown");
              }),
              Child::Finished);
    EXPECT_EQ(InChildProcess([&] {
                  CVMessageManager::GetDBFilePath(dir.Path());
                  CVMessageManager::LoadMessageConstants(
                      dir.Write("m.h", "#define M 55001 /* No answer, 100%% */\n"));
                  const std::vector<std::string> expected = {"2012: No answer, 100%", ""};
                  if (shownWithout(dir.Path()) != expected) throw std::logic_error("shown");
              }),
              Child::Finished);
}

TEST(CVCSoapProcess, MessageWithoutRoomForItsTextIsNotPosted) {
    LoopbackServer server;
    MessagingParameters parameters;
    parameters.Set(Slot::Url, server.Url());
    parameters.Set(Slot::Message, "fire");
    parameters.recipients = {"night"};
    parameters.form = kVoiceForm;
    parameters.templateName = "t";
    parameters.templateNames.assign(kMaxTemplatePairs, "n");
    parameters.templateValues.assign(kMaxTemplatePairs, "v");
    CVCSoapProcess process(&parameters, {});
    testing::internal::CaptureStdout();
    process.Run(RunMode::Messaging);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr(">Out of memory<"));
    EXPECT_STREQ(process.ResultLine(), "2012 99999999 \"Out of memory\"\n");
    EXPECT_THAT(server.Bodies(), IsEmpty());
}

TEST(CVCProcess, ReportsAreCutBetweenCharacters) {
    ShowingProcess process;
    process.ReportError("2012", "%s", (std::string(2046, 'x') + "\xC3\xA9tail").c_str());
    process.ReportError("2012", "%s", "");
    EXPECT_THAT(process.shown, ElementsAre("2012: " + std::string(2046, 'x'), "2012: "));
}

TEST(CVCCommandProcess, SendsOneCommandForEachRecipientUpToTheFirstEmptyOne) {
    LoopbackServer server;
    MessagingParameters parameters;
    parameters.Set(Slot::Url, server.Url());
    parameters.commandCode = kStandardSend;
    parameters.recipients = {"a", "b", "", "d"};
    ShowingMessaging(&parameters).RunMessaging();
    EXPECT_THAT(server.Bodies(), ElementsAre("cmd=Cli&modid=cli&name=a", "cmd=Cli&modid=cli&name=b"));
}

TEST(CVCCommandProcess, PrintsOutcomesWhenAlone) {
    MessagingParameters parameters;
    CVCCommandProcess process(&parameters);
    testing::internal::CaptureStdout();
    process.ShowResult("No answer", "2012");
    parameters.Set(Slot::JobId, std::string(5000, '7'));
    process.ShowResult("x", "2012");
    process.ShowReply("reply");
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "2012 99999999 \"No answer\"\n2012 " + std::string(1018, '7') + "reply\n");
}

TEST(CVCCoradmProcess, SendsOneCommandForEachMember) {
    LoopbackServer server;
    AdministrationParameters parameters;
    ShowingAdministration process(Members(parameters, {"kim", "", "lee"}));
    parameters.Set(Slot::Url, server.Url());
    process.RunAdministration();
    EXPECT_THAT(server.Bodies(), ElementsAre("cmd=Cli&subcmd=addrecvtogrp&modid=cli&mname=kim"));

    parameters.Set(Slot::CommandWord, "delrecvfromgrp");
    parameters.allMembers = 1;
    process.RunAdministration();
    ASSERT_EQ(server.Bodies().size(), 2u);
    EXPECT_EQ(server.Bodies()[1], "cmd=Cli&subcmd=delrecvfromgrp&modid=cli&all=YES&mname=kim");
}

TEST(CVCCoradmProcess, StopsAtTheFirstMemberThatFails) {
    LoopbackServer server({.missing = 5});
    AdministrationParameters parameters;
    ShowingAdministration process(Members(parameters, {"kim", "lee"}));
    parameters.Set(Slot::Url, server.Url());
    process.RunAdministration();
    EXPECT_EQ(server.Bodies().size(), 1u);
}

TEST(CVCCoradmProcess, OwnFailoverAddressReplacesTheRequests) {
    LoopbackServer own;
    LoopbackServer requested;
    AdministrationParameters parameters;
    ShowingAdministration process(Members(parameters, {"kim"}));
    parameters.Set(Slot::Url, DeadUrl());
    parameters.Set(Slot::Url2, requested.Url());
    process.SetFailoverUrl(own.Url());
    process.RunAdministration();
    EXPECT_EQ(own.Bodies().size(), 1u);
    EXPECT_THAT(requested.Bodies(), IsEmpty());
}
