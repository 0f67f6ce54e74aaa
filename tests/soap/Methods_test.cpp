#include "soap/Methods.h"

#include <gtest/gtest.h>

#include <set>

#include "util/StringRoutines.h"

using namespace quorbel;

TEST(Methods, NoFieldNameHidesAnother) {
    for (const Method& method : Methods()) {
        std::set<std::string_view> names;
        for (const auto fields : {CommonFields(), method.fields}) {
            for (const Field& field : fields) names.insert(field.element);
        }
        for (const auto name : names) {
            for (const auto other : names) {
                EXPECT_FALSE(name != other && EndsWithNoCase(name, other)) << method.name << ": " << name;
            }
        }
    }
}

TEST(Methods, TagsAreComparedByTheirEndsLetterCaseAside) {
    const struct {
        const char* tag;
        const char* name;
        bool ends;
    } cases[] = {
        {"ns1:sENDsTDmESSAGE", "SendStdMessage", true},
        {"SendXtdMessage", "SendStdMessage", false},
        {"Message", "SendStdMessage", false},
        {"ns:BGUI", "bGUI", true},
        {"GUI", "bGUI", false},
        {"bGUT", "bGUI", false},
        {"AddReceiver\x12Group", "AddReceiver2Group", false},
    };
    for (const auto& c : cases) EXPECT_EQ(TagName(c.tag).EndsWith(c.name), c.ends) << c.tag;
}

TEST(Methods, OnlyOneFieldEndsWithAMethodsName) {
    std::set<std::string_view> closing;
    for (const Method& method : Methods()) {
        for (const Field& field : method.fields) {
            if (MethodClosedBy(TagName(field.element)) != nullptr) closing.insert(field.element);
        }
    }
    EXPECT_EQ(closing, std::set<std::string_view>{"bAddAndDeleteGroup"});
}
