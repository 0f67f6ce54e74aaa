#include "cvdblib/sqlite3/src/CVMessageManager.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

class Catalogue : public testing::Test {
protected:
    TempDir dir_;

    Catalogue() { Use(dir_.Path()); }
    ~Catalogue() override { CVMessageManager::Release(); }

    static void Use(const std::string& directory) {
        CVMessageManager::Release();
        CVMessageManager::GetDBFilePath(directory);
    }
    bool Load(const std::string& constants) {
        return CVMessageManager::LoadMessageConstants(dir_.Write("messages.h", constants));
    }
    static std::string All() {
        std::string all;
        for (const auto& message : CVMessageManager::GetMessages()) {
            all += std::to_string(message.id) + "=" + message.text + "\n";
        }
        return all;
    }
};

template <class Action>
std::string LogicError(Action action) {
    try {
        action();
    } catch (const std::logic_error& thrown) {
        return thrown.what();
    }
    return "no logic_error";
}

}  // namespace

TEST_F(Catalogue, AnswersNothingAndCreatesNothingBeforeALoad) {
    EXPECT_EQ(CVMessageManager::GetMessage(7202), "");
    EXPECT_EQ(All(), "");
    EXPECT_TRUE(dir_.Names().empty());
}

TEST_F(Catalogue, HoldsTheMessagesOfTheLastLoad) {
    EXPECT_TRUE(Load("#ifndef MESSAGES_H\n#define MESSAGES_H\n#define MSG_A 9 /* old */\n#endif\n"));
    const std::string constants = "#define MSG_X 7202 /* Disk full */\n#define MSG_Y 12 /* It's 100% '' */";
    EXPECT_TRUE(Load(constants));
    EXPECT_TRUE(Load(constants));
    EXPECT_EQ(All(), "12=It's 100% ''\n7202=Disk full\n");
    EXPECT_EQ(CVMessageManager::GetMessage(12), "It's 100% ''");
    EXPECT_EQ(CVMessageManager::GetMessage(9), "");
}

TEST_F(Catalogue, StaysAsItWasWhenALoadFails) {
    ASSERT_TRUE(Load("#define MSG_A 9 /* old */\n"));
    EXPECT_THROW(Load("#define A 1 /* a */\n#define B 2 /\n"), std::out_of_range);
    EXPECT_THROW(Load("#define A 1 /* a */\n#define B 1 /* b */\n"), CVDBexception);
    EXPECT_EQ(LogicError([&] { Load("#define A 1 /* a */\n#define B -2 /* b */\n"); }),
              "Message ID returned from the database does not match");
    EXPECT_THROW(CVMessageManager::LoadMessageConstants(dir_.Path()), std::exception) << "a directory";
    EXPECT_EQ(LogicError([] { CVMessageManager::LoadMessageConstants(""); }),
              "No message constants file specified.");
    EXPECT_EQ(LogicError([] { CVMessageManager::LoadMessageConstants("/none"); }),
              "No message constants file exist at the specified path: [/none].");
    EXPECT_EQ(All(), "9=old\n");
    EXPECT_TRUE(Load("#define MSG_B 10 /* new */\n")) << "nothing is left locked or begun";
}

TEST_F(Catalogue, StaysAsItWasWhenALoaderIsKilled) {
    ASSERT_TRUE(Load("#define MSG_A 9 /* old */\n"));
    std::string constants;
    for (int id = 1; id <= 30000; ++id) {
        constants += "#define M " + std::to_string(id) + " /* " + std::string(300, 'm') + " */\n";
    }
    const auto size = fs::file_size(dir_ / "messages.sdb");
    Use(dir_.Path());
    const pid_t loader = StartChild([&] { Load(constants); });
    // Once the file grows, half of the new catalogue overflows the loader's memory into it.
    for (int wait = 0; wait < 10000 && fs::file_size(dir_ / "messages.sdb") == size; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(loader, SIGKILL);
    ASSERT_EQ(WaitForChild(loader), Child::Crashed) << "it had finished: make the file larger";
    EXPECT_TRUE(fs::exists(dir_ / "messages.sdb-journal"));
    EXPECT_EQ(All(), "9=old\n");
}

TEST_F(Catalogue, AnswersNothingOnAFileThatIsNoCatalogue) {
    dir_.Write("messages.sdb", std::string(5000, 'x'));
    EXPECT_EQ(CVMessageManager::GetMessage(9), "");
    EXPECT_THROW(Load("#define MSG_A 9 /* a */\n"), CVDBexception);
    fs::remove(dir_ / "messages.sdb");
    fs::create_directory(dir_ / "messages.sdb");
    EXPECT_EQ(CVMessageManager::GetMessage(9), "") << "at once, not after the retries of an open";
    EXPECT_THROW(Load("#define MSG_A 9 /* a */\n"), CVDBexception);
}

TEST_F(Catalogue, LiesWhereTheFirstCallSays) {
    const std::string fixed = "/usr/local/corvane/config/messages.sdb";
    EXPECT_EQ(CVMessageManager::GetDBFilePath("/other"), dir_ / "messages.sdb");
    const std::pair<const char*, std::string> cases[] = {
        {"", fixed}, {"/a", "/a/messages.sdb"}, {"/a/", "/a/messages.sdb"}};
    for (const auto& [directory, path] : cases) {
        CVMessageManager::Release();
        EXPECT_EQ(CVMessageManager::GetDBFilePath(directory), path);
    }
    CVMessageManager::Release();
    CVMessageManager::PreferDirectory(dir_.Path());
    EXPECT_EQ(CVMessageManager::GetDBFilePath(), fixed) << "no catalogue there";
    CVMessageManager::Release();
    dir_.Write("messages.sdb", "");
    CVMessageManager::PreferDirectory(dir_.Path());
    EXPECT_EQ(CVMessageManager::GetDBFilePath(), dir_ / "messages.sdb");
}
