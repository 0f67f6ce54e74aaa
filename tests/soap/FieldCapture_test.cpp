#include "soap/FieldCapture.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "soap/MethodTable.h"
#include "util/StringRoutines.h"

using namespace quorbel;

TEST(FieldRules, NoFieldNameHidesAnother) {
    for (const Method& method : Methods()) {
        std::set<std::string_view> names;
        for (const auto handler : {FieldHandler::Common, method.handler}) {
            for (const FieldRule& rule : FieldsOf(handler)) names.insert(rule.element);
        }
        for (const auto name : names) {
            for (const auto other : names) {
                EXPECT_FALSE(name != other && EndsWithNoCase(name, other)) << method.name << ": " << name;
            }
        }
    }
}

TEST(FieldRules, OnlyOneFieldEndsWithAMethodsName) {
    std::set<std::string_view> closing;
    for (const Method& method : Methods()) {
        for (const FieldRule& rule : FieldsOf(method.handler)) {
            if (MethodClosedBy(rule.element) != nullptr) closing.insert(rule.element);
        }
    }
    EXPECT_EQ(closing, std::set<std::string_view>{"bAddAndDeleteGroup"});
}

TEST(FieldCapture, ItemsWithoutMembersAreCounted) {
    RequestRecord record;
    FieldCapture capture(record);
    const auto item = [&](const char* element, bool isNil) {
        capture.Start(FieldHandler::StandardMessage, element, isNil);
        capture.End(FieldHandler::StandardMessage, element);
    };
    item("ArrayOfResponseActionData", false);
    item("ResponseActionData", true);
    item("CustomFieldData", true);
    EXPECT_EQ(record.responseActions.count, 2u);
    ASSERT_EQ(record.responseActions.items.size(), 2u);
    EXPECT_FALSE(record.responseActions.items[1][0].has_value());
    EXPECT_EQ(record.customFields.items.size(), 1u);
}

TEST(FieldCapture, ItemPartsOutsideAnItemAreDropped) {
    RequestRecord record;
    FieldCapture capture(record);
    capture.Start(FieldHandler::StandardMessage, "szFieldName", false);
    capture.Data(FieldHandler::StandardMessage, "lost");
    capture.End(FieldHandler::StandardMessage, "szFieldName");
    EXPECT_TRUE(record.customFields.items.empty());
}
