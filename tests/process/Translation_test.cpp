#include "process/Translation.h"

#include <gtest/gtest.h>

#include "process/Commands.h"

using namespace quorbel;

TEST(Translation, BooleansAreFalseOnlyByTheirFirstLetters) {
    const std::pair<const char*, bool> cases[] = {
        {"true", true}, {"FALSE", false}, {"falsehood", false}, {"0x", false}, {"0", false},
        {"", true},     {"no", true},     {" false", true},     {"fal", true}, {"1", true}};
    for (const auto& [text, value] : cases) {
        RequestRecord record;
        record.Set(Slot::TimeStamp, text);
        EXPECT_EQ(IsTrue(record, Slot::TimeStamp), value) << "'" << text << "'";
    }
    EXPECT_FALSE(IsTrue(RequestRecord{}, Slot::TimeStamp));
}

TEST(Translation, CutsFixedFieldsAtTheirWidths) {
    RequestRecord record;
    for (const Slot slot :
         {Slot::AdminName, Slot::UserIp, Slot::AccessCode, Slot::UserTimeZone, Slot::Authentication}) {
        record.Set(slot, std::string(300, 'x'));
    }
    EXPECT_EQ(std::string(TranslateAdmin(record).name).size(), 100u);
    const UserInfo user = TranslateUser(record);
    EXPECT_EQ(std::string(user.ip).size(), 50u);
    EXPECT_EQ(std::string(user.accessCode).size(), 19u);
    EXPECT_EQ(std::string(user.timeZone).size(), 49u);
    EXPECT_EQ(std::string(user.authentication).size(), 9u);
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

TEST(Translation, FloodsOfItemsAreBounded) {
    RequestRecord record;
    record.Set(Slot::MessagingAction, "send");
    for (RequestItems* items : {&record.customFields, &record.responseActions}) {
        for (int i = 0; i < 400; ++i) {
            if (TextTriple* item = items->Current(); item != nullptr)
                (*item)[0] = (*item)[1] = std::make_shared<TextBuffer>("v");
            items->Count();
        }
    }
    const auto lines = BuildMessageCommand(TranslateMessaging(record), "kim").lines;
    EXPECT_LE(lines.size(), CommandParameters::kMaxLines);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "response=v"), 256)
        << "custom fields overwrote the actions";
}
