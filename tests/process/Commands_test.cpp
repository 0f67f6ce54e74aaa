#include "process/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "process/Translation.h"
#include "util/BoundedText.h"

// What no SOAP request reaches; the system cases hold the rest.

using namespace quorbel;

namespace {

using testing::ElementsAre;

class AdministrationCommandsTest : public testing::Test {
protected:
    void SetUp() override {
        CopyText(admin.name, "adm");
        CopyText(admin.password, "pw");
    }
    /// The lines behind the five that every command begins with.
    std::vector<std::string> Lines(const std::string& word, std::size_t member = 0) {
        parameters.Set(Slot::CommandWord, word);
        const auto lines = BuildAdministrationCommand(request, member).lines;
        EXPECT_THAT(
            std::vector<std::string>(lines.begin(), lines.begin() + 5),
            ElementsAre("cmd=Cli", "subcmd=" + word, "modid=cli", "adminusername=adm", "adminpassword=pw"));
        return {lines.begin() + 5, lines.end()};
    }
    std::string Refusal(const std::string& word, const char* method = "AddGroup") {
        parameters.Set(Slot::CommandWord, word);
        const char* reason = RefusalOf(request, method);
        return reason == nullptr ? "" : reason;
    }

    AdministrationParameters parameters;
    AdminInfo admin{};
    DepartmentInfo department{};
    UserInfo user{};
    UserGroupInfo userGroup{};
    ScheduleInfo schedule{};
    AdministrationRequest request = {&parameters, &admin, &department, &user, &userGroup, &schedule};
};

MessagingParameters WithCode(int code) {
    MessagingParameters parameters;
    parameters.commandCode = code;
    parameters.Set(Slot::JobId, "7");
    return parameters;
}

}  // namespace

TEST_F(AdministrationCommandsTest, GroupFlagsCountOnlyWhenExactlyOne) {
    parameters.Set(Slot::ObjectName, "ops");
    parameters.newName = "ops2";
    parameters.topic = "t";
    parameters.enableOwnerSettings = 1;
    parameters.alertOwner = 2;
    parameters.recipientUserGroup = 1;
    parameters.disable = 1;
    EXPECT_THAT(Lines("modgroup"),
                ElementsAre("groupname=ops", "newname=ops2", "topic=t", "enableownersettings=YES",
                            "isrecipusergrp=YES", "disable=YES"));
}

TEST_F(AdministrationCommandsTest, CommandsAboutOneKindOfObjectHaveTheSameLines) {
    for (const Slot slot : {Slot::ObjectName, Slot::Recipient, Slot::Department}) parameters.Set(slot, "ops");
    const std::pair<const char*, std::vector<const char*>> kinds[] = {
        {"addgroup", {"modgroup", "delgroup", "querygroup", "addgrpassocdept", "querygroupmem"}},
        {"addreceiver", {"modreceiver", "delreceiver", "queryreceiver", "addreceiverassocdept"}},
        {"adddept", {"moddept", "deldept", "querydept"}},
        {"addusergroup", {"modusergroup", "delusergroup", "queryusergroup"}},
    };
    CopyText(department.name, "ops");
    CopyText(userGroup.name, "ops");
    for (const auto& [first, others] : kinds) {
        const auto lines = Lines(first);
        EXPECT_FALSE(lines.empty()) << first;
        for (const char* word : others) EXPECT_EQ(Lines(word), lines) << word;
    }
}

TEST_F(AdministrationCommandsTest, MembershipTakesTheMembersNameAndTheFlagForAll) {
    parameters.Set(Slot::ObjectName, "ops");
    parameters.memberNames = {"kim", "lee"};
    EXPECT_THAT(Lines("addrecvtogrp", 1), ElementsAre("grp_name=ops", "mname=lee"));
    parameters.allMembers = 1;
    EXPECT_THAT(Lines("delrecvfromgrp", 7), ElementsAre("grp_name=ops", "all=YES"));
    EXPECT_EQ(Refusal("addgrptogrp"), "-all parameter is not supported");
    parameters.memberNames = {""};
    EXPECT_EQ(Refusal("delgrpfromgrp"), "");
}

TEST_F(AdministrationCommandsTest, ObjectsThatNoMethodReachesHaveTheirLinesAndAreRefusedToRequests) {
    parameters.otherValues = {{"desp", "d"},    {"name", "UTC"},      {"offset", "-60"},
                              {"dialcmd", "a"}, {"flowcontrol", "x"}, {"bkcarr2", "c"}};
    CopyText(schedule.scheduleName, "night");
    CopyText(schedule.delay, "5");
    for (const std::string verb : {"add", "mod", "del"}) {
        EXPECT_THAT(Lines(verb + "timezone"), ElementsAre("name=UTC", "desp=d", "offset=-60"));
        EXPECT_THAT(Lines(verb + "messenger"),
                    ElementsAre("name=UTC", "desp=d", "dialcmd=a", "flowcontrol=x"));
        EXPECT_THAT(Lines(verb + "carrier"), ElementsAre("name=UTC", "desp=d", "bkcarr2=c"));
        EXPECT_THAT(Lines(verb + "action"), ElementsAre("name=UTC", "desp=d"));
        for (const char* target : {"receiver", "onduty"}) {
            const std::string word = verb + (verb == "del" ? "schdfrom" : "schdto") + target;
            EXPECT_THAT(Lines(word), ElementsAre("schdname=night", "delay=5"));
        }
    }
    for (const char* word : {"enablegrp", "enablegrpmem"})
        EXPECT_THAT(Lines(word), ElementsAre("name=UTC")) << word;
    EXPECT_THAT(Lines("unheardof"), ElementsAre());
    for (const char* word : {"addtimezone", "addschdtoonduty", "modgroup", "AddGroup", "addgroupx"})
        EXPECT_EQ(Refusal(word), "Unknown command name") << word;
}

TEST_F(AdministrationCommandsTest, MessagesNeedAWordAndAnExactName) {
    admin.name[0] = '\0';
    EXPECT_EQ(Refusal("single", "SendStdMessage"), "");
    EXPECT_EQ(Refusal("single", "sendstdmessage"), "Missing Admin user-name and/or password");
    EXPECT_EQ(Refusal(" \"", "SendStdMessage"), "Invalid command");
}

TEST(MessageCommands, ProgramsAskForTheLastMessageAndReject) {
    auto parameters = WithCode(kQueryLastMessage);
    parameters.securityCode = "s3";
    EXPECT_THAT(
        BuildMessageCommand(parameters, "kim").lines,
        ElementsAre("cmd=Cli", "subcmd=query_last_msg", "modid=cli", "rcv_name=kim", "securitycode=s3"));
    parameters = WithCode(kReject);
    parameters.comments = "late";
    parameters.confirmer = "kim";
    EXPECT_THAT(
        BuildMessageCommand(parameters, "").lines,
        ElementsAre("cmd=Cli", "subcmd=reject", "modid=cli", "jobid=7", "comments=late", "conf_by=kim"));
}

TEST(MessageCommands, RecipientLineIsNamedByTheCode) {
    const std::pair<int, const char*> cases[] = {
        {512, "rcv_name=kim"},  {513, "grp_name=kim"},     {514, "casc_name=kim"},
        {515, "duty_name=kim"}, {516, "carrier_name=kim"}, {519, "rota_name=kim"},
        {520, "foll_name=kim"}, {523, "name=kim"},         {0, "name=kim"},
    };
    for (const auto& [code, line] : cases)
        EXPECT_THAT(BuildMessageCommand(WithCode(code), "kim").lines, testing::Contains(line));
}

TEST(MessageCommands, NoCustomFieldIsALineOfTheCommandItself) {
    const std::pair<const char*, bool> cases[] = {
        {"CMD", true},           {"subcmd", true}, {"ModId", true},  {"adminUserName", true},
        {"adminpassword", true}, {"cmdx", false},  {"mycmd", false}, {"admin", false},
    };
    for (const auto& [name, isRefused] : cases) {
        auto parameters = WithCode(kStandardSend);
        parameters.recipients = {"kim"};
        parameters.extras = {
            {std::make_shared<TextBuffer>(name), std::make_shared<TextBuffer>("x"), nullptr}};
        EXPECT_EQ(RefusalOf(parameters) != nullptr, isRefused) << name;
    }
}

TEST(MessageCommands, FormsAddTheirLinesInFrontOfTheRecipient) {
    auto parameters = WithCode(kStandardSend);
    parameters.form = kVoiceForm;
    parameters.templateName = "fire";
    parameters.templateNames = {"floor", "", "never"};
    parameters.templateValues = {"3", "x", "y"};
    parameters.attachment = "/tmp/plan";
    EXPECT_THAT(BuildMessageCommand(parameters, "kim").lines,
                ElementsAre("cmd=Cli", "modid=cli", "content_type=voice", "template=fire", "param=floor",
                            "value=3", "name=kim", "jobid=7"));
    EXPECT_EQ(BuildMessageCommand(parameters, "kim").attachment, "/tmp/plan");
    parameters.form = kFaxForm;
    parameters.coverPage = "blue";
    EXPECT_THAT(
        BuildMessageCommand(parameters, "kim").lines,
        ElementsAre("cmd=Cli", "modid=cli", "content_type=fax", "cover_page=blue", "name=kim", "jobid=7"));
}

TEST(Translation, GrantsPermissionsByTheNumbersOfTheirSlots) {
    RequestRecord record;
    record.Set(static_cast<Slot>(62), "true");
    record.Set(static_cast<Slot>(63), "false");
    record.Set(static_cast<Slot>(97), "1");
    const UserGroupInfo group = TranslateUserGroup(record);
    ASSERT_EQ(group.permissionCount, 2);
    EXPECT_STREQ(group.permissions[0].slot, "62");
    EXPECT_STREQ(group.permissions[1].slot, "97");
}
