#include "syslib/IniReaderWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "CVioFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using testing::ElementsAre;

namespace {

/// The file's content after it was loaded and saved once.
std::string SavedAgain(const std::string& content) {
    TempDir dir;
    IniReaderWriter ini(dir.Write("x.ini", content), true);
    EXPECT_TRUE(ini.load());
    EXPECT_TRUE(ini.IsLoaded());
    EXPECT_TRUE(ini.save());
    return ReadFile(dir / "x.ini");
}

std::vector<std::string> Keys(IniReaderWriter& ini, const char* section) {
    std::vector<std::string> keys;
    for (const IniLine* line : ini.Entries(ini.FindSection(section))) keys.push_back(line->text);
    return keys;
}

}  // namespace

TEST(IniReaderWriter, WritesBackWhatItKeeps) {
    const std::string longValue(600, 'v');
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"[a]\n", "\n[a]\n"},
        {"\n\n[a]\n\n\n[b]\n", "\n[a]\n\n[b]\n"},
        {"# c\n  [a]\t\r\n; plain\nplain\n", "# c\n\n[a]\n; plain\nplain\n"},
        {"k=v\n k = v = w \n", "k=v\nk =v = w\n"},
        {"k=\nk= \n=v\n =v\n=\n", ""},
        {"#k=v\n[k=v\n", "#k=v\n\n[k=v\n"},
        {"last=1", "last=1\n"},
        {"k=\xA0\n", "k=\xA0\n"},  // white space in other alphabets only
        // Read in pieces of 511 bytes and cut there when written: the two halves make the line whole again.
        {"k=" + longValue + "\n", "k=" + std::string(509, 'v') + std::string(91, 'v') + "\n"},
    };
    for (const auto& [content, saved] : cases) {
        EXPECT_EQ(SavedAgain(content), saved);
        EXPECT_EQ(SavedAgain(saved), saved) << "changes with each save";
    }
}

TEST(IniReaderWriter, FindsWithoutRegardToCase) {
    TempDir dir;
    IniReaderWriter ini(dir.Write("x.ini", "level=0\n[MAIN]\nlevel = 1\nLevel=2\nlevel=3\n[b]\nonly=4\n"));
    ASSERT_TRUE(ini.load());
    EXPECT_EQ(ini.key(ini.section("[main]"), "LEVEL"), "2");
    EXPECT_EQ(ini.FindKey(ini.FindSection("[main]"), "only"), nullptr);
    EXPECT_EQ(ini.FindKey(ini.FindSection("[c]"), "level"), nullptr);
    EXPECT_EQ(ini.FindSection("main"), ini.NoSection());
    EXPECT_THAT(Keys(ini, "[main]"), ElementsAre("level ", "Level", "level"));
    EXPECT_THAT(Keys(ini, "[c]"), ElementsAre());
    EXPECT_EQ(ini.Sections().size(), 2U) << "looking for a section made one";
}

// Looking for the section's end at each of them would go through 500,000 million lines.
TEST(IniReaderWriter, ListsAMillionEntries) {
    TempDir dir;
    constexpr std::size_t kEntries = 1'000'000;
    std::string content = "[a]\n";
    for (std::size_t entry = 0; entry < kEntries; ++entry) content += "k=v\n";
    IniReaderWriter ini(dir.Write("x.ini", content + "[b]\nk=v\n"));
    ASSERT_TRUE(ini.load());
    EXPECT_EQ(ini.Entries(ini.FindSection("[a]")).size(), kEntries);
}

TEST(IniReaderWriter, AddsWhatItDoesNotFind) {
    TempDir dir;
    IniReaderWriter ini(dir.Write("x.ini", "[a]\nx=1\n# of a\n[b]\n"));
    ASSERT_TRUE(ini.load());
    const auto a = ini.section("[a]");
    std::string& first = ini.key(a, "x");
    ini.key(a, "y") = "2";
    ini.key(ini.section("[C]"), "z") = "3";
    ini.key(ini.section("[b]"), "empty");
    first = "changed";
    EXPECT_TRUE(ini.save(dir / "other.ini"));
    EXPECT_EQ(ReadFile(dir / "other.ini"), "\n[a]\nx=changed\n# of a\ny=2\n\n[b]\nempty=\n\n[C]\nz=3\n");
    EXPECT_EQ(ReadFile(dir / "x.ini"), "[a]\nx=1\n# of a\n[b]\n");
}

TEST(IniReaderWriter, TellsWhyItFailedAndIsEmptyThen) {
    TempDir dir;
    const std::string path = dir.Write("x.ini", "[a]\n");
    IniReaderWriter ini(path);
    ASSERT_TRUE(ini.load());
    std::remove(path.c_str());
    EXPECT_FALSE(ini.load());
    EXPECT_EQ(ini.LastError(), ENOENT);
    EXPECT_FALSE(ini.IsLoaded());
    EXPECT_TRUE(ini.Sections().empty());

    IniReaderWriter directory(dir.Path());
    EXPECT_FALSE(directory.load());
    EXPECT_EQ(directory.LastError(), EISDIR);
    EXPECT_FALSE(directory.save());
}

TEST(IniReaderWriter, LeavesAFileAloneThatAnotherProcessHolds) {
    TempDir dir;
    CVioFile held(dir.Write("x.ini", "[a]\n"));
    held.Open("r+");
    held.Lock('r', true);
    const auto inAnotherProcess = [&](const std::function<bool(IniReaderWriter&)>& step) {
        return InChildProcess([&] {
            IniReaderWriter ini(dir / "x.ini", true);
            if (!step(ini)) throw ini.LastError();
        });
    };
    const auto load = [](IniReaderWriter& ini) { return ini.load(); };
    const auto refused = [](IniReaderWriter& ini) { return !ini.save() && ini.LastError() == EAGAIN; };
    EXPECT_EQ(inAnotherProcess(load), Child::Finished) << "readers share the file";
    EXPECT_EQ(inAnotherProcess(refused), Child::Finished);
    EXPECT_EQ(ReadFile(dir / "x.ini"), "[a]\n") << "emptied without the lock";
    held.Lock('w', true);
    EXPECT_EQ(inAnotherProcess(load), Child::Threw);
}

TEST(IniReaderWriter, AsksTenTimesWithTheFullRandomWaitBetween) {
    TempDir dir;
    CVioFile held(dir.Write("x.ini", "[a]\n"));
    held.Open("r+");
    held.Lock('w', true);
    const auto body = [&] {
        std::vector<std::chrono::milliseconds> waits;
        IniReaderWriter ini(dir / "x.ini", true, true);
        ini.SetSleep([&](auto wait) { waits.push_back(wait); });
        std::srand(1);
        if (ini.load() || waits.size() != 9) throw 1;
        std::srand(1);
        for (const auto wait : waits) {
            if (wait.count() != std::rand()) throw 2;
        }
    };
    EXPECT_EQ(InChildProcess(body), Child::Finished);
}
