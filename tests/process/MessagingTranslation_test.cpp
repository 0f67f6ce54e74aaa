#include "process/MessagingTranslation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "process/MessageCommands.h"
#include "process/RequestValues.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;

using Items = std::vector<std::vector<const char*>>;

/// A standard message with these (name, value) and (response, action, final) items.
RequestRecord MessageWith(const Items& fields, const Items& actions) {
    RequestRecord record;
    record[Slot::MessagingAction].emplace("send");
    const auto fill = [](RequestItems& items, const Items& texts) {
        for (const auto& parts : texts) {
            for (std::size_t i = 0; i < parts.size(); ++i) items.Current()[i].emplace(parts[i]);
            ++items.count;
        }
    };
    fill(record.customFields, fields);
    fill(record.responseActions, actions);
    return record;
}

/// The lines behind the recipient's.
std::vector<std::string> ExtraLines(const RequestRecord& record) {
    const auto lines = BuildSendCommand(TranslateMessaging(record), "kim").lines;
    return {lines.begin() + 3, lines.end()};
}

}  // namespace

TEST(RequestValues, BooleansAreFalseOnlyByTheirFirstLetters) {
    const struct {
        const char* text;
        bool value;
    } cases[] = {{"true", true}, {"FALSE", false}, {"falsehood", false}, {"0x", false}, {"0", false},
                 {"", true},     {"no", true},     {" false", true},     {"f", true},   {"1", true}};
    for (const auto& c : cases) {
        RequestRecord record;
        record[Slot::TimeStamp].emplace();
        record[Slot::TimeStamp]->Append(c.text);
        EXPECT_EQ(IsTrue(record, Slot::TimeStamp), c.value) << "'" << c.text << "'";
    }
    EXPECT_FALSE(IsTrue(RequestRecord{}, Slot::TimeStamp));
}

TEST(RequestValues, AbsentEmptiesAndEmptyKeeps) {
    RequestRecord record;
    std::string text = "old";
    record[Slot::Carrier].emplace();
    CopyValue(text, record, Slot::Carrier);
    EXPECT_EQ(text, "old");
    CopyValue(text, record, Slot::Pin);
    EXPECT_EQ(text, "");
}

TEST(MessagingTranslation, ActionWordChoosesTheCommand) {
    const struct {
        const char* action;
        int code;
    } cases[] = {{"quick", 516},         {"QUERY", 517}, {"confirm", 521}, {"queryjobhistory", 524},
                 {"querygroupmsg", 525}, {"send", 523},  {"other", 523}};
    for (const auto& c : cases) {
        RequestRecord record;
        record[Slot::MessagingAction].emplace(c.action);
        EXPECT_EQ(TranslateMessaging(record).commandCode, c.code) << c.action;
    }
    EXPECT_EQ(TranslateMessaging({}).commandCode, 0);
}

TEST(MessagingTranslation, QuickMessageGoesToItsCarrier) {
    RequestRecord record;
    record[Slot::Carrier].emplace("SkyPager");
    EXPECT_EQ(TranslateMessaging(record).recipients.front(), "")
        << "cut short: not yet known to be a quick one";
    record[Slot::MessagingAction].emplace("quick");
    EXPECT_EQ(TranslateMessaging(record).recipients.front(), "SkyPager");
}

TEST(MessagingTranslation, ExtraLinesFollowTheSlots) {
    EXPECT_THAT(ExtraLines(MessageWith({{"n1", "v1"}}, {{"1", "ack", "true"}, {"2"}})),
                ElementsAre("response=1", "action=ack", "final=true", "response=2", "n1=v1"));
    EXPECT_THAT(
        ExtraLines(MessageWith({{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}}, {{"R1", "A1", "F1"}})),
        ElementsAre("response=R1", "action=A1", "final=F1", "a=1", "b=2", "c=3", "d=4", "A1=R1"));
    EXPECT_THAT(ExtraLines(MessageWith({{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}, {"e", "5"}}, {})),
                ElementsAre("response=5", "action=e", "a=1", "b=2", "c=3", "d=4", "e=5"));
    EXPECT_THAT(ExtraLines(MessageWith({{"a", "1"}, {"", "2"}, {"c", "3"}}, {{"1"}, {"", "x"}, {"3"}})),
                ElementsAre("response=1", "a=1"))
        << "an entry without its first member ends the list";
}

TEST(MessagingTranslation, FloodsOfItemsAreBounded) {
    const auto lines = ExtraLines(MessageWith(Items(400, {"n", "v"}), Items(400, {"r", "a", "f"})));
    EXPECT_LE(lines.size(), CommandParameters::kMaxLines);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "response=v"), 256)
        << "custom fields overwrote the actions";
}
