#include "process/MessageCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorbel;

namespace {

using testing::ElementsAre;

MessagingParameters WithCode(int code) {
    MessagingParameters parameters;
    parameters.commandCode = code;
    parameters.jobId = "7";
    parameters.recipients = {"kim"};
    return parameters;
}

}  // namespace

TEST(MessageCommands, QueriesAndConfirmationsHaveTheirOwnLines) {
    auto parameters = WithCode(kQueryLastMessage);
    parameters.securityCode = "s3";
    EXPECT_THAT(
        BuildSingleCommand(parameters).lines,
        ElementsAre("cmd=Cli", "subcmd=query_last_msg", "modid=cli", "rcv_name=kim", "securitycode=s3"));

    parameters = WithCode(kConfirm);
    EXPECT_THAT(BuildSingleCommand(parameters).lines,
                ElementsAre("cmd=Cli", "subcmd=confirm", "modid=cli", "jobid=7"));
    parameters = WithCode(kReject);
    parameters.comments = "late";
    parameters.confirmer = "kim";
    EXPECT_THAT(BuildSingleCommand(parameters).lines, ElementsAre("cmd=Cli", "subcmd=reject", "modid=cli",
                                                                  "jobid=7", "comments=late", "conf_by=kim"));
    parameters = WithCode(kQueryStatus);
    parameters.jobId.clear();
    EXPECT_THAT(BuildSingleCommand(parameters).lines,
                ElementsAre("cmd=Cli", "subcmd=query_status", "modid=cli"));
}

TEST(MessageCommands, RecipientLineIsNamedByTheCode) {
    const struct {
        int code;
        const char* line;
    } cases[] = {
        {512, "rcv_name=kim"},  {513, "grp_name=kim"},     {514, "casc_name=kim"},
        {515, "duty_name=kim"}, {516, "carrier_name=kim"}, {519, "rota_name=kim"},
        {520, "foll_name=kim"}, {523, "name=kim"},         {0, "name=kim"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(BuildSendCommand(WithCode(c.code), "kim").lines, testing::Contains(c.line));
}

TEST(MessageCommands, FormsAddTheirLinesInFrontOfTheRecipient) {
    auto parameters = WithCode(kStandardSend);
    parameters.form = kVoiceForm;
    parameters.templateName = "fire";
    parameters.templateNames = {"floor", "", "never"};
    parameters.templateValues = {"3", "x", "y"};
    parameters.attachment = "/tmp/plan";
    EXPECT_THAT(BuildSendCommand(parameters, "kim").lines,
                ElementsAre("cmd=Cli", "modid=cli", "content_type=voice", "template=fire", "param=floor",
                            "value=3", "name=kim", "jobid=7"));
    EXPECT_EQ(BuildSendCommand(parameters, "kim").attachment, "/tmp/plan");
    parameters.form = kFaxForm;
    parameters.coverPage = "blue";
    EXPECT_THAT(
        BuildSendCommand(parameters, "kim").lines,
        ElementsAre("cmd=Cli", "modid=cli", "content_type=fax", "cover_page=blue", "name=kim", "jobid=7"));
}
