#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

using testing::HasSubstr;

namespace {

std::string LoadAndList(const OperatorSite& site, const std::string& constants) {
    const std::string file = site.Files().Write("messages.h", constants);
    const auto loaded = site.Messages({"--config-dir", site.Config(), "load", file});
    return Outcome(loaded) + Outcome(site.Messages({"list", "--config-dir", site.Config()}));
}

}  // namespace

TEST(Messages, LoadsListsAndGetsTexts) {
    const OperatorSite site;
    EXPECT_EQ(LoadAndList(site, "#define B 9 /* it's full */\n#define A 7 /* first */\n"),
              "0 " + site.Config() + "/messages.sdb now holds 2 messages\n0 7 first\n9 it's full\n");
    EXPECT_EQ(Outcome(site.Messages({"--config-dir", site.Config(), "get", "9"})), "0 it's full\n");
    EXPECT_EQ(Outcome(site.Messages({"--config-dir", site.Config(), "get", "8"})),
              "1 cvmessages: no message 8 in " + site.Config() + "/messages.sdb\n");
}

TEST(Messages, NamesTheLineOfAConstantsFileThatCannotBeLoaded) {
    const std::pair<const char*, const char*> cases[] = {
        {"#define B 8 x", "messages.h:2: Message comment is too short"},
        {"#define B 7 /* again */", "messages.h:2: number 7 stands in line 1 as well"},
        {"#define B -1 /* below */", "messages.h:2: number -1 is negative"},
    };
    const OperatorSite site;
    LoadAndList(site, "#define OLD 1 /* old */\n");
    for (const auto& [secondLine, reason] : cases) {
        const std::string outcome = LoadAndList(site, "#define A 7 /* a */\n" + std::string(secondLine));
        EXPECT_THAT(outcome, HasSubstr(reason));
        EXPECT_THAT(outcome, testing::EndsWith("; the catalogue is as it was\n0 1 old\n"));
    }
}

TEST(Messages, CreatesNoCatalogueUnlessAFileWasLoaded) {
    const OperatorSite site;
    const std::string before = site.Listing();
    const std::vector<std::string> cases[] = {
        {"list"},
        {"get", "1"},
        {"load", site.Config()},
        {"load", "/dev/null"},
        {"load", site.Files() / "none.h"},
    };
    for (auto arguments : cases) {
        arguments.insert(arguments.end(), {"--config-dir", site.Config()});
        const auto result = site.Messages(arguments);
        EXPECT_EQ(result.exitStatus, 1) << arguments[0];
        EXPECT_THAT(result.errors, testing::StartsWith("cvmessages: "));
    }
    EXPECT_EQ(site.Listing(), before);
}

TEST(Messages, TellsOfADamagedCatalogue) {
    const OperatorSite site;
    site.Files().Write("config/messages.sdb", "no database at all");
    for (const char* command : {"list", "get"}) {
        std::vector<std::string> arguments = {"--config-dir", site.Config(), command};
        if (command == std::string("get")) arguments.emplace_back("7");
        EXPECT_THAT(Outcome(site.Messages(arguments)), HasSubstr("file is not a database"));
    }
}
