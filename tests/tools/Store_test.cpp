#include "tools/paging-standin/Store.h"

#include <gmock/gmock.h>
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

TEST_F(StandinStore, AddsQueriesAndDeletesEveryKind) {
    const struct {
        const char* kind;
        const char* keyLine;
    } cases[] = {{"group", "groupname"},
                 {"receiver", "rcv_name"},
                 {"dept", "name"},
                 {"user", "name"},
                 {"usergroup", "name"}};
    for (const auto& c : cases) {
        const auto form = [&](const char* verb) {
            return std::string("subcmd=") + verb + c.kind + "&" + c.keyLine + "=kim";
        };
        EXPECT_THAT(Say(form("query")), testing::StartsWith("ERROR no such")) << c.kind;
        EXPECT_EQ(Say(form("add") + "&desp=first"), "OK kim added\r\n") << c.kind;
        EXPECT_THAT(Say(form("add")), testing::EndsWith("kim is already there\r\n")) << c.kind;
        EXPECT_EQ(Say(form("query")), std::string("OK kim\r\n") + c.keyLine + "=kim\r\ndesp=first\r\n");
        EXPECT_EQ(Say(form("del")), "OK kim deleted\r\n") << c.kind;
        EXPECT_EQ(Say(std::string("subcmd=query") + c.kind), "OK 0 found\r\n") << c.kind;
    }
}

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

TEST_F(StandinStore, ModifiesAndRenames) {
    Say("subcmd=adduser&name=kim&email=a");
    Say("subcmd=adduser&name=lee");
    EXPECT_EQ(Say("subcmd=moduser&name=kim&newname=lee"), "ERROR lee is already there\r\n");
    EXPECT_EQ(Say("subcmd=moduser&name=kim&newname=kimberly&email=b&ip=1"), "OK kim changed\r\n");
    EXPECT_EQ(Say("subcmd=queryuser&name=kimberly"), "OK kimberly\r\nname=kimberly\r\nemail=b\r\nip=1\r\n");
    EXPECT_EQ(Say("subcmd=queryuser"), "OK 2 found\r\nname=kimberly\r\nname=lee\r\n");

    Say("subcmd=addusergroup&name=ops");
    EXPECT_EQ(Say("subcmd=setusergroupdept&name=ops&deptname=plant"), "OK ops changed\r\n");
    EXPECT_EQ(Say("subcmd=setusergroupugp&name=none&ugpname=all"), "ERROR no such usergroup: none\r\n");
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
