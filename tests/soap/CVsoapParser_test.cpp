#include "soap/CVsoapParser.h"

#include <gtest/gtest.h>

#include "tests/support/RecordingLog.h"

using namespace quorbel;

namespace {

class EnvelopeParserTest : public testing::Test {
protected:
    /// Parses a complete envelope around this content.
    void Parse(const std::string& content) {
        ParseEnvelope(("<Envelope xmlns:xsi='urn:i'>" + content + "</Envelope>").c_str(), record, log);
    }
    std::string Text(Slot slot) const { return std::string(record[slot]); }

    RequestRecord record;
    RecordingLog log;
};

}  // namespace

TEST_F(EnvelopeParserTest, LicenceFieldsOfAUserGroupTakeWhatFollows) {
    Parse(
        "<AddUserGroup><bSendgrpWithoutDeptLicense>false</bSendgrpWithoutDeptLicense><bLog>false</bLog>"
        "<bModgroupWithoutDeptLicense>0</bModgroupWithoutDeptLicense> </AddUserGroup>");
    EXPECT_EQ(Text(static_cast<Slot>(89)), " ");
    EXPECT_EQ(Text(static_cast<Slot>(92)), " ");
    EXPECT_EQ(Text(static_cast<Slot>(62)), "false");
}

TEST_F(EnvelopeParserTest, CollectsItemsInDocumentOrder) {
    Parse(
        "<SendStdMessage><szResponse>lost</szResponse><ResponseActionData><szResponse>1</szResponse>"
        "<szAction>ack</szAction><bFinal>true</bFinal></ResponseActionData><ResponseActionData xsi:nil='true'/><ResponseActionData>"
        "<szResponse>gone<ResponseActionData/>2</szResponse></ResponseActionData><CustomFieldData>"
        "<szFieldName>n</szFieldName><szFieldValue>v</szFieldValue></CustomFieldData>"
        "<szFieldName>lost</szFieldName></SendStdMessage>");
    const auto& actions = record.responseActions;
    ASSERT_EQ(actions.count, 4u);
    EXPECT_EQ(TextOf(actions.items[0][1]), "ack");
    EXPECT_EQ(actions.items[1], TextTriple{}) << "a nil one counts without members";
    EXPECT_EQ(actions.items[2], TextTriple{}) << "an item inside begins anew";
    EXPECT_EQ(actions.items[3], TextTriple{}) << "text behind the inner one is in no item";
    ASSERT_EQ(record.customFields.count, 1u);
    EXPECT_EQ(TextOf(record.customFields.items[0][0]), "n");
    EXPECT_EQ(TextOf(record.customFields.items[0][1]), "v");
}

TEST_F(EnvelopeParserTest, FlagsLeftSetCountAgainInASecondMethodOfTheirKind) {
    Parse(
        "<AddUserGroup><bSendgrpWithoutDeptLicense>1</bSendgrpWithoutDeptLicense></AddUserGroup>between"
        "<QueryUser>other</QueryUser><AddUserGroup>again</AddUserGroup>");
    EXPECT_EQ(Text(static_cast<Slot>(89)), "again");
}
