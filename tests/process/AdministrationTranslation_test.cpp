#include "process/AdministrationTranslation.h"

#include <gtest/gtest.h>

#include "soap/MethodTable.h"

using namespace quorbel;

TEST(AdministrationTranslation, CutsFixedFieldsAtTheirWidths) {
    RequestRecord record;
    for (const Slot slot :
         {Slot::AdminName, Slot::UserIp, Slot::AccessCode, Slot::UserTimeZone, Slot::Authentication}) {
        record[slot].emplace(std::string(300, 'x'));
    }
    EXPECT_EQ(std::string(TranslateAdmin(record).name).size(), 100u);
    const UserInfo user = TranslateUser(record);
    EXPECT_EQ(std::string(user.ip).size(), 50u);
    EXPECT_EQ(std::string(user.accessCode).size(), 19u);
    EXPECT_EQ(std::string(user.timeZone).size(), 49u);
    EXPECT_EQ(std::string(user.authentication).size(), 9u);
}

TEST(AdministrationTranslation, GrantsPermissionsByElementName) {
    RequestRecord record;
    record[static_cast<Slot>(62)].emplace("true");
    record[static_cast<Slot>(63)].emplace("false");
    record[static_cast<Slot>(91)].emplace("1");
    const auto named = [&](int methodCode) {
        const UserGroupInfo group = TranslateUserGroup(record, methodCode);
        std::string names;
        for (int i = 0; i < group.permissionCount; ++i) names += std::string(group.permissions[i].name) + " ";
        return names;
    };
    EXPECT_EQ(named(145), "bLog bAddgroupWithoutDeptLicense ");
    EXPECT_EQ(named(148), "bLog bAddAndDeleteGroup ");
}

TEST(AdministrationTranslation, EveryPermissionElementOfEveryMethodIsGranted) {
    for (const Method& method : Methods()) {
        for (const FieldRule& rule : FieldsOf(method.handler)) {
            const int slot = static_cast<int>(rule.slot);
            if (slot < static_cast<int>(Slot::FirstPermission) ||
                slot > static_cast<int>(Slot::LastPermission))
                continue;
            RequestRecord record;
            record[rule.slot].emplace("true");
            const UserGroupInfo group = TranslateUserGroup(record, method.code);
            ASSERT_EQ(group.permissionCount, 1) << rule.element;
            EXPECT_EQ(group.permissions[0].name, rule.element);
        }
    }
}
