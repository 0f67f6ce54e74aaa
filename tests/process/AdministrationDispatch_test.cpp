#include "process/AdministrationDispatch.h"

#include <gtest/gtest.h>

#include "util/BoundedText.h"

using namespace quorbel;

namespace {

class AdministrationDispatchTest : public testing::Test {
protected:
    void SetUp() override {
        CopyText(admin.name, "adm");
        CopyText(admin.password, "pw");
    }
    std::string Refusal(const std::string& command, const char* method = "AddGroup") {
        parameters.command = command;
        const char* reason =
            RefusalOf({&parameters, &admin, &department, &user, &userGroup, &g_tSchd}, method);
        return reason == nullptr ? "" : reason;
    }

    AdministrationParameters parameters;
    AdminInfo admin{};
    DepartmentInfo department{};
    UserInfo user{};
    UserGroupInfo userGroup{};
};

}  // namespace

TEST_F(AdministrationDispatchTest, ChecksTheWordThenTheCredentials) {
    EXPECT_EQ(Refusal(" \""), "Invalid command");
    EXPECT_EQ(Refusal("AddGroup"), "Unknown command name");
    EXPECT_EQ(Refusal("addgroupx"), "Unknown command name");
    CopyText(admin.name, " ");
    EXPECT_EQ(Refusal("addgroup"), "") << "a blank name is a name";
    admin.name[0] = '\0';
    EXPECT_EQ(Refusal("addgroup"), "Missing Admin user-name and/or password");
    EXPECT_EQ(Refusal("nonsense"), "Missing Admin user-name and/or password");
    EXPECT_EQ(Refusal("single", "SendStdMessage"), "");
    EXPECT_EQ(Refusal("single", "sendstdmessage"), "Missing Admin user-name and/or password");
    EXPECT_EQ(Refusal("", "SendStdMessage"), "Invalid command");
}

TEST_F(AdministrationDispatchTest, MembershipNeedsBothNames) {
    parameters.memberNames = {" "};
    for (const char* word : {"addrecvtogrp", "addgrptogrp", "delrecvfromgrp", "delgrpfromgrp"}) {
        const bool adds = word[0] == 'a';
        parameters.objectName = " ";
        EXPECT_EQ(Refusal(word), "Invalid group name") << word;
        parameters.objectName = "ops";
        EXPECT_EQ(Refusal(word), "Invalid member name") << word;
        parameters.allMembers = 1;
        EXPECT_EQ(Refusal(word), adds ? "-all parameter is not supported" : "") << word;
        parameters.allMembers = 0;
    }
    parameters.memberNames = {"kim"};
    EXPECT_EQ(Refusal("addrecvtogrp"), "");
}

TEST_F(AdministrationDispatchTest, NamesAreRequiredInTheDepartmentsWords) {
    for (const char* word :
         {"adddept", "deldept", "querydept", "adduser", "moduser", "deluser", "queryuser"}) {
        EXPECT_EQ(Refusal(word), "Missing department name") << word;
    }
    for (const char* word :
         {"addusergroup", "delusergroup", "queryusergroup", "setusergroupdept", "setusergroupugp"}) {
        EXPECT_EQ(Refusal(word), "Missing user-group name") << word;
    }
    CopyText(userGroup.name, "ops");
    EXPECT_EQ(Refusal("setusergroupdept"), "Missing department name");
    EXPECT_EQ(Refusal("setusergroupugp"), "Missing ugp name");
    CopyText(department.name, " ");
    EXPECT_EQ(Refusal("adddept"), "") << "a blank name is a name";
}

TEST_F(AdministrationDispatchTest, OnlyANewUsersAuthenticationIsChecked) {
    CopyText(user.userName, "kim");
    const struct {
        const char* authentication;
        const char* refusal;
    } cases[] = {{"", ""},
                 {"SQL", "Missing NetIQ username"},
                 {"nt", "Missing NT username"},
                 {"sqlx", "Invalid authentication"},
                 {"n", "Invalid authentication"}};
    for (const auto& c : cases) {
        CopyText(user.authentication, c.authentication);
        EXPECT_EQ(Refusal("adduser"), c.refusal) << c.authentication;
        EXPECT_EQ(Refusal("moduser"), "") << c.authentication;
    }
    CopyText(user.authentication, "NT");
    CopyText(user.ntUserName, "k");
    EXPECT_EQ(Refusal("adduser"), "");
}
