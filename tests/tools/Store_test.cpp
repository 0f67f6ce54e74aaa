#include "tools/paging-standin/Store.h"

#include <gtest/gtest.h>

namespace standin {
namespace {

/// Commands given as they stand in a form, less the "cmd" that each begins with.
class StandinStore : public testing::Test {
protected:
    std::string Say(const std::string& form) { return store_.Execute(ParseForm("cmd=Cli&" + form)).ToText(); }

    Store store_;
};

}  // namespace

TEST_F(StandinStore, KeepsMembersAsLongAsTheyExist) {
    const std::string kim = "&grp_name=night&mtype=receiver&mname=kim";
    EXPECT_EQ(Say("subcmd=addrecvtogrp" + kim), "ERROR no such group: night\r\n");
    Say("subcmd=addgroup&groupname=night");
    EXPECT_EQ(Say("subcmd=addrecvtogrp" + kim), "ERROR no such member: receiver=kim\r\n");
    Say("subcmd=addreceiver&rcv_name=kim");
    EXPECT_EQ(Say("subcmd=addrecvtogrp" + kim), "OK receiver=kim added to night\r\n");
    EXPECT_EQ(Say("subcmd=addrecvtogrp" + kim), "ERROR receiver=kim is already in night\r\n");
    EXPECT_EQ(Say("subcmd=querygroup&groupname=night"), "OK night\r\ngroupname=night\r\nreceiver=kim\r\n");
    EXPECT_EQ(Say("subcmd=delrecvfromgrp" + kim), "OK receiver=kim removed from night\r\n");
    EXPECT_EQ(Say("subcmd=delrecvfromgrp" + kim), "ERROR receiver=kim is not in night\r\n");

    Say("subcmd=addrecvtogrp" + kim);
    Say("subcmd=delreceiver&rcv_name=kim");
    EXPECT_EQ(Say("subcmd=querygroup&groupname=night"), "OK night\r\ngroupname=night\r\n");
}

TEST_F(StandinStore, FollowsAJobFromSendToConfirmation) {
    EXPECT_EQ(Say("modid=cli&message=hi"), "ERROR name or carrier_name is missing\r\n");
    EXPECT_EQ(Say("modid=cli&name=oncall&message=hi"), "OK job 100001.1 queued for oncall\r\n");
    EXPECT_EQ(Say("modid=cli&carrier_name=mobile&jobid=100001.2"), "OK job 100001.2 queued for mobile\r\n");
    EXPECT_EQ(Say("subcmd=query_status&jobid=100001.1"),
              "OK 100001.1\r\nname=oncall\r\nmessage=hi\r\njobid=100001.1\r\nstatus=queued\r\n"
              "event=queued for oncall\r\n");
    EXPECT_EQ(Say("subcmd=confirm&jobid=100001.1"), "OK job 100001.1 confirmed\r\n");
    EXPECT_EQ(Say("subcmd=queryjobhistory&jobid=100001.1"),
              "OK job 100001.1\r\nevent=queued for oncall\r\nevent=confirmed\r\n");
    EXPECT_EQ(Say("subcmd=queryjobgroupmsg&jobmajorid=100001"),
              "OK jobs of 100001\r\njobid=100001.1 status=confirmed\r\njobid=100001.2 status=queued\r\n");
    EXPECT_EQ(Say("subcmd=queryjobgroupmsg&jobmajorid=7"), "ERROR no such job: 7\r\n");
}

TEST_F(StandinStore, KeepsNoPasswordAndOneLineAnItem) {
    Say("subcmd=adduser&adminusername=a&adminpassword=s1&name=kim&password=s2&retypepassword=s2&desp=x%0d%"
        "0ay");
    EXPECT_EQ(Say("subcmd=queryuser&name=kim"), "OK kim\r\nname=kim\r\ndesp=x\\r\\ny\r\n");
}

TEST_F(StandinStore, RefusesWhatIsNoCommand) {
    EXPECT_EQ(store_.Execute({}).ToText(), "ERROR cmd=Cli is missing\r\n");
    EXPECT_EQ(Say("subcmd=reboot"), "ERROR unknown command: reboot\r\n");
    EXPECT_EQ(Say("subcmd=addgroup&name=night"), "ERROR groupname is missing\r\n");
    EXPECT_EQ(Say("subcmd=confirm"), "ERROR jobid is missing\r\n");
}

}  // namespace standin
