#include "process/AdministrationCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "util/BoundedText.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;

class AdministrationCommandsTest : public testing::Test {
protected:
    /// The lines behind the five that every command begins with.
    std::vector<std::string> Lines(const char* word, std::size_t member = 0) {
        CopyText(admin.name, "adm");
        CopyText(admin.password, "pw");
        parameters.command = word;
        const auto lines = BuildAdministrationCommand(
                               {&parameters, &admin, &department, &user, &userGroup, &schedule}, member)
                               .lines;
        EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 5),
                    ElementsAre("cmd=Cli", std::string("subcmd=") + word, "modid=cli", "adminusername=adm",
                                "adminpassword=pw"));
        return {lines.begin() + 5, lines.end()};
    }

    AdministrationParameters parameters;
    AdminInfo admin{};
    DepartmentInfo department{};
    UserInfo user{};
    UserGroupInfo userGroup{};
    ScheduleInfo schedule{};
};

}  // namespace

TEST_F(AdministrationCommandsTest, GroupFlagsCountOnlyWhenExactlyOne) {
    parameters.objectName = "ops";
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

TEST_F(AdministrationCommandsTest, VoiceLinesAppearForTheVoiceCarrierOnly) {
    parameters.receiver = "kim";
    parameters.voiceNumber = "555";
    parameters.carrier = "VOICE";
    EXPECT_THAT(Lines("addreceiver"), ElementsAre("rcv_name=kim", "carrier=VOICE", "voice=ON",
                                                  "voicenumber=555", "devicestatus=1"));
    parameters.carrier = "Voice1";
    parameters.deviceStatus = "0";
    EXPECT_THAT(Lines("modreceiver"), ElementsAre("rcv_name=kim", "carrier=Voice1", "devicestatus=0"));
}

TEST_F(AdministrationCommandsTest, MembershipTakesTheMembersName) {
    parameters.objectName = "ops";
    parameters.memberKind = "receiver";
    parameters.memberNames = {"kim", "lee"};
    EXPECT_THAT(Lines("addrecvtogrp", 1), ElementsAre("grp_name=ops", "mtype=receiver", "mname=lee"));
    parameters.allMembers = 1;
    EXPECT_THAT(Lines("delrecvfromgrp", 7), ElementsAre("grp_name=ops", "all=YES", "mtype=receiver"));
}

TEST_F(AdministrationCommandsTest, ObjectsThatNoMethodReachesHaveTheirLines) {
    parameters.otherValues = {
        {"desp", "d"}, {"name", "UTC"}, {"offset", "-60"}, {"flowcontrol", "x"}, {"bkcarr2", "c"}};
    EXPECT_THAT(Lines("addtimezone"), ElementsAre("name=UTC", "desp=d", "offset=-60"));
    EXPECT_THAT(Lines("modmessenger"), ElementsAre("name=UTC", "desp=d", "flowcontrol=x"));
    EXPECT_THAT(Lines("delcarrier"), ElementsAre("name=UTC", "desp=d", "bkcarr2=c"));
    EXPECT_THAT(Lines("addaction"), ElementsAre("name=UTC", "desp=d"));
    EXPECT_THAT(Lines("enablegrp"), ElementsAre("name=UTC"));
    EXPECT_THAT(Lines("unheardof"), ElementsAre());
    CopyText(schedule.scheduleName, "night");
    CopyText(schedule.delay, "5");
    EXPECT_THAT(Lines("addschdtoonduty"), ElementsAre("schdname=night", "delay=5"));
}
