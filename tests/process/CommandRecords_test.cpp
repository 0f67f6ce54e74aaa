#include "process/CommandRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorbel;

using testing::ElementsAre;

TEST(CommandParameters, LeavesOutLinesThatLackSomething) {
    CommandParameters command;
    command.AddParameter("a", "1");
    command.AddParameter("b", "");
    command.AddParameter("", "2");
    command.AddParameterPair("n", "x", "v", "");
    command.AddParameterPair("n", "", "v", "y");
    command.AddFlag("on1", 1);
    command.AddFlag("on2", 2);
    command.AddFlag("on3", -1);
    command.AddNumber("offset", -60);
    EXPECT_THAT(command.lines, ElementsAre("a=1", "n=x", "v=", "on1=on", "offset=-60"));
}

TEST(CommandParameters, SetsALineWithoutMovingTheCount) {
    CommandParameters command;
    command.AddParameter("a", "1");
    command.SetParameter(2, "c", "3");
    command.SetParameter(0, "", "x");
    command.SetParameter(CommandParameters::kMaxLines, "far", "x");
    EXPECT_EQ(command.count, 1u);
    command.AddParameter("b", "2");
    EXPECT_THAT(command.Posted(), ElementsAre("a=1", "b=2"));
    EXPECT_THAT(command.lines, ElementsAre("a=1", "b=2", "c=3"));
}

TEST(CommandParameters, HoldsNoMoreThanTheServerTakesAndNoHalfPair) {
    CommandParameters command;
    for (int i = 0; i < 1023; ++i) command.AddNumber("n", i);
    command.AddParameterPair("param", "floor", "value", "3");
    EXPECT_EQ(command.count, 1023u);
    for (int i = 1023; i < 2000; ++i) command.AddNumber("n", i);
    EXPECT_EQ(command.lines.size(), 1024u);
    EXPECT_EQ(command.lines.back(), "n=1023");
}

TEST(CommandParameters, PostsNoMoreThanItsLines) {
    CommandParameters command;
    command.AddParameter("a", "1");
    command.count = 5;
    EXPECT_THAT(command.Posted(), ElementsAre("a=1"));
}
