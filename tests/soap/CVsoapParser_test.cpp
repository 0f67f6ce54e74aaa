#include "soap/CVsoapParser.h"

#include <gtest/gtest.h>

#include "soap/CVsoap.h"
#include "tests/support/RecordingLog.h"
#include "util/BoundedText.h"

using namespace quorbel;

namespace {

class EnvelopeParserTest : public testing::Test {
protected:
    void SetUp() override {
        CopyText(g_szCommand, "");
        currentMethodCode = kNoMethod;
    }
    int Parse(const std::string& body) { return ParseEnvelope(body.c_str(), record, log); }
    /// Parses a complete envelope around one method element.
    int ParseMethod(const std::string& method, const std::string& fields) {
        return Parse("<e:Envelope xmlns:e='urn:e' xmlns:xsi='urn:i'><e:Body><" + method + ">" + fields +
                     "</" + method + "></e:Body></e:Envelope>");
    }
    std::string Text(Slot slot) const { return std::string(record[slot]); }

    RequestRecord record;
    RecordingLog log;
};

}  // namespace

TEST_F(EnvelopeParserTest, DeliversUtf8WhateverTheDocumentsEncoding) {
    Parse(
        "<?xml version='1.0' "
        "encoding='ISO-8859-1'?><SendStdMessage><szMessage>caf\xE9</szMessage></SendStdMessage>");
    EXPECT_EQ(Text(Slot::Message), "caf\xC3\xA9");
}

TEST_F(EnvelopeParserTest, TellsAbsentNilAndEmptyApart) {
    ParseMethod("SendStdMessage",
                "<bTimeStamp></bTimeStamp><szJobID xsi:nil='false'>12</szJobID>"
                "<szSender xsi:nil='true' xmlns:y='urn:y'>kept</szSender><szSubject a='1'>s</szSubject>"
                "<bForwardReply xsi:nil='true' a='1'/>");
    EXPECT_TRUE(record.Has(Slot::TimeStamp));
    EXPECT_EQ(Text(Slot::TimeStamp), "");
    EXPECT_FALSE(record.Has(Slot::JobId)) << "nil by name, whatever its value";
    EXPECT_EQ(Text(Slot::Sender), "kept") << "a text behind a nil that is not last counts";
    EXPECT_EQ(Text(Slot::Subject), "s");
    EXPECT_FALSE(record.Has(Slot::ForwardReply)) << "nil in front of another attribute, and no text";
}

TEST_F(EnvelopeParserTest, SecondUrlTakesEverythingBehindIt) {
    ParseMethod("QueryMessage", "<szURL>u1</szURL><szURL2>u2</szURL2><szJobID>7</szJobID>\n  ");
    EXPECT_EQ(Text(Slot::Url), "u1");
    EXPECT_EQ(Text(Slot::JobId), "7");
    EXPECT_EQ(Text(Slot::Url2), "  ");

    record = {};
    ParseMethod("QueryMessage", "<szURL>u1</szURL><szJobID>7</szJobID><szURL2>u2</szURL2>");
    EXPECT_EQ(Text(Slot::Url2), "u2");
}

TEST_F(EnvelopeParserTest, LicenceFieldsOfAUserGroupTakeWhatFollows) {
    ParseMethod("AddUserGroup",
                "<bSendgrpWithoutDeptLicense>false</bSendgrpWithoutDeptLicense><bLog>false</bLog>"
                "<bModgroupWithoutDeptLicense>0</bModgroupWithoutDeptLicense> ");
    EXPECT_EQ(Text(static_cast<Slot>(89)), " ");
    EXPECT_EQ(Text(static_cast<Slot>(92)), " ");
    EXPECT_EQ(Text(static_cast<Slot>(62)), "false");
}

TEST_F(EnvelopeParserTest, FieldThatEndsWithAMethodsNameClosesTheMethod) {
    ParseMethod("SetUserGroupDeptPermission",
                "<szURL>u</szURL><bAddAndDeleteGroup>true</bAddAndDeleteGroup><bViewGroup>true</bViewGroup>");
    EXPECT_EQ(Text(static_cast<Slot>(91)), "true");
    EXPECT_FALSE(record.Has(static_cast<Slot>(94)));
    EXPECT_STREQ(g_szCommand, "SetUserGroupDeptPermission");
}

TEST_F(EnvelopeParserTest, CollectsItemsInDocumentOrder) {
    ParseMethod(
        "SendStdMessage",
        "<szResponse>lost</szResponse><ResponseActionData><szResponse>1</szResponse><szAction>ack</szAction>"
        "<bFinal>true</bFinal></ResponseActionData><ResponseActionData xsi:nil='true'/><ResponseActionData>"
        "<szResponse>gone<ResponseActionData/>2</szResponse></ResponseActionData><CustomFieldData>"
        "<szFieldName>n</szFieldName><szFieldValue>v</szFieldValue></CustomFieldData>"
        "<szFieldName>lost</szFieldName>");
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

TEST_F(EnvelopeParserTest, FieldsInsideEachOtherTakeEachPiece) {
    ParseMethod("AddUser",
                "<szEmail>a<szPassword>b<szUserName>c</szUserName>d</szPassword><bGUI>e</bGUI></szEmail>f");
    EXPECT_EQ(Text(Slot::UserName), "c");
    EXPECT_EQ(Text(Slot::Password), "d");
    EXPECT_EQ(Text(Slot::Gui), "e");
    EXPECT_EQ(Text(Slot::UserEmail), "e");
}

TEST_F(EnvelopeParserTest, FlagsLeftSetCountAgainInASecondMethodOfTheirKind) {
    Parse(
        "<E><AddUserGroup><bSendgrpWithoutDeptLicense>1</bSendgrpWithoutDeptLicense></AddUserGroup>between"
        "<QueryUser>other</QueryUser><AddUserGroup>again</AddUserGroup></E>");
    EXPECT_EQ(Text(static_cast<Slot>(89)), "again");
}
