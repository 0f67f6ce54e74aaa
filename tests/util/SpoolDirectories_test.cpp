#include "util/SpoolDirectories.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "CVException.h"
#include "CVioFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RunTogether.h"
#include "tests/support/TempDir.h"
#include "util/BoundedText.h"

using namespace quorbel;

using testing::ElementsAre;

namespace {

class SpoolDirectories : public testing::Test {
protected:
    SpoolDirectories() {
        CopyText(g_strConfigDir, dir_.Path());
        std::memset(g_tDir, 0, sizeof g_tDir);
    }

    /// Loads a file "dir" with this content.
    void Load(const std::string& content) {
        dir_.Write("dir", content);
        EXPECT_EQ(LoadDirectoryConfig("dir", g_tDir), 1);
    }

    std::string Slot(DirectorySlot slot) const { return DirectoryOf(g_tDir, slot); }

    /// Each queue as "id|name|path".
    std::vector<std::string> Queues() const {
        std::vector<std::string> queues;
        for (const auto& queue : std::span(g_pQueueDirectory, static_cast<std::size_t>(g_nQueueDirectory))) {
            queues.push_back(std::to_string(queue.id) + "|" + queue.name + "|" + queue.path);
        }
        return queues;
    }

    TempDir dir_;
};

// A queue that keeps the file from being rewritten.
constexpr char kQueue[] = "5\tq\t/q\n";

}  // namespace

TEST_F(SpoolDirectories, StoresWhatFollowsTheLastTab) {
    const std::pair<std::string, std::string> cases[] = {
        {"log_dir:\t\t/var/log/x", "/var/log/x"},
        {"log_dir:\t\t /var/log/x \r", "/var/log/x"},
        {"log_dir:\t\t /var/log/x \t", ""},
        {"log_dir:\t/a\t/b", "/b"},
        {"log_dir2\t/a", "/a"},
        {"log_dir = /a", "kept"},
        {" log_dir:\t\t/a", "kept"},
        {"Log_dir:\t\t/a", "kept"},
        {"log_dir:\t\t/spool/100%%", "/spool/100%"},
        {"log_dir:\t\t/%n%s", "/(null)"},
        {"log_dir:\t\t/" + std::string(400, 'x'), "/" + std::string(254, 'x')},
    };
    for (const auto& [line, value] : cases) {
        Load("log_dir:\t\tkept\n" + line + "\n" + kQueue);
        EXPECT_EQ(Slot(DirectorySlot::Log), value) << line;
        EXPECT_EQ(Slot(DirectorySlot::Error), "") << "ran into the next slot";
    }
}

TEST_F(SpoolDirectories, KnowsEachDirectoryByItsKey) {
    Load(
        "spool_dir_old\t/spool\nsnmp_spool_dir\t/snmp\ncascade_dir\t/cascade\nwap_dir\t/wap\nschedule_dir\t/"
        "schedule\n"
        "archive_dir\t/archive\nlog_dir\t/log\nerror_dir\t/error\nfilter_dir\t/filter\nreport_dir\t/report\n"
        "stat_dir\t/stat\nfax_dir\t/fax\nvoice_dir\t/voice\nattachment_dir\t/attachment\nwaiting_dir\t/"
        "waiting\n" +
        std::string(kQueue));
    std::vector<std::string> table(std::begin(g_tDir), std::end(g_tDir));
    EXPECT_THAT(
        table, ElementsAre("/spool", "/cascade", "/schedule", "/archive", "/log", "/error", "/report", "",
                           "/stat", "/fax", "/voice", "/wap", "/snmp", "/filter", "/attachment", "/waiting"));
}

TEST_F(SpoolDirectories, ReadsQueuesSortedByName) {
    const std::string longName(60, 'n');
    const std::string longPath(300, 'p');
    Load(
        "7\tzeta\t/z\n  3\tAlpha\t/a b\textra \n0\tzero\t/0\nx\ty\t/z\n7\tname\n7\tname\t\n8 tabless\n\n# "
        "note\n" +
        std::string("-1\tgone\t/g\n99999999999\tmax\t/m\n4\t") + longName + "\t" + longPath + "\n");
    EXPECT_THAT(Queues(),
                ElementsAre("3|Alpha|/a b\textra", "-1|gone|/g", "2147483647|max|/m",
                            "4|" + longName.substr(0, 50) + "|" + longPath.substr(0, 255), "7|zeta|/z"));
    Load(kQueue);
    EXPECT_THAT(Queues(), ElementsAre("5|q|/q")) << "a second load must not add to the first";
}

TEST_F(SpoolDirectories, RewritesAFileWithoutQueues) {
    Load("spool_dir:\t\t/spool\n# a note\nlog_dir:\t\t/log\n");
    const std::string rewritten =
        "snmp_spool_dir:\t\t/spool\ncascade_dir:\t\t\nschedule_dir:\t\t\narchive_dir:\t\t\nlog_dir:\t\t/log\n"
        "error_dir:\t\t\nfilter_dir:\t\t\nreport_dir:\t\t\nstat_dir:\t\t\nwap_dir:\t\t\nfax_dir:\t\t\nvoice_"
        "dir:\t\t\n"
        "attachment_dir:\t\t\nwaiting_dir:\t\t\n101\tDefault\t/spool\n";
    EXPECT_EQ(ReadFile(dir_ / "dir"), rewritten);
    EXPECT_THAT(Queues(), ElementsAre("101|Default|/spool"));

    std::memset(g_tDir, 0, sizeof g_tDir);
    EXPECT_EQ(LoadDirectoryConfig("dir", g_tDir), 1);
    EXPECT_EQ(Slot(DirectorySlot::Spool), "");
    EXPECT_EQ(Slot(DirectorySlot::SnmpSpool), "/spool");
    EXPECT_THAT(Queues(), ElementsAre("101|Default|/spool"));
    EXPECT_EQ(ReadFile(dir_ / "dir"), rewritten);
}

TEST_F(SpoolDirectories, NumbersQueuesAndLeavesOutDeletedOnes) {
    Load("7\tseven\t/7\n6\tdeleted\t/d\n5\tnew\t/n\n4\tnewer\t/m\n");
    g_pQueueDirectory[0].id = -1;
    g_pQueueDirectory[1].id = 0;
    g_pQueueDirectory[2].id = 0;
    EXPECT_EQ(SaveDirectoryConfig("dir", g_tDir), 1);
    EXPECT_THAT(ReadFile(dir_ / "dir"),
                testing::EndsWith(":\t\t\n108\tnew\t/n\n109\tnewer\t/m\n7\tseven\t/7\n"));

    g_nQueueDirectory = 0;
    EXPECT_EQ(SaveDirectoryConfig("dir", g_tDir), 1);
    EXPECT_THAT(Queues(), ElementsAre("101|Default|"));

    Load("2147483600\ta\t/a\n1\tb\t/b\n3\tc\t/c\n4\td\t/d\n");
    g_pQueueDirectory[2].id = 0;
    g_pQueueDirectory[3].id = 0;
    EXPECT_EQ(SaveDirectoryConfig("dir", g_tDir), 1);
    EXPECT_THAT(Queues(), ElementsAre("2147483600|a|/a", "1|b|/b", "2|c|/c", "3|d|/d"));
}

TEST_F(SpoolDirectories, KeepsTheOldFileWhenTheNewOneFindsNoRoom) {
    const std::string content = "spool_dir:\t\t/spool\nlog_dir:\t\t/log\n";
    dir_.Write("real/dir", content);
    std::filesystem::permissions(dir_ / "real/dir", std::filesystem::perms(0640));
    std::filesystem::create_symlink("real/dir", dir_ / "dir");
    const auto start = [&](bool full, bool twoNames) {
        if (twoNames) std::filesystem::create_hard_link(dir_ / "real/dir", dir_ / "other");
        return InChildProcess([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit = {full ? 100 : RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limit);
            LoadDirectoryConfig("dir", g_tDir);
        });
    };
    for (const bool twoNames : {false, true}) {
        EXPECT_EQ(start(true, twoNames), Child::Threw);
        EXPECT_EQ(ReadFile(dir_ / "dir"), content) << twoNames;
    }
    EXPECT_EQ(start(false, false), Child::Finished);
    EXPECT_THAT(ReadFile(dir_ / "other"), testing::EndsWith("101\tDefault\t/spool\n"));
    std::filesystem::remove(dir_ / "other");
    dir_.Write("real/dir", content);
    EXPECT_EQ(start(false, false), Child::Finished);
    EXPECT_THAT(ReadFile(dir_ / "real/dir"), testing::EndsWith("101\tDefault\t/spool\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(dir_ / "dir"));
    EXPECT_EQ(std::filesystem::status(dir_ / "dir").permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_ / "real"), {}), 1)
        << "left something behind";
}

TEST_F(SpoolDirectories, TurnsAFailedFileIntoTheGeneralException) {
    try {
        LoadDirectoryConfig("missing", g_tDir);
        FAIL() << "loaded what is not there";
    } catch (const CVException& failure) {
        EXPECT_EQ(dynamic_cast<const CVioException*>(&failure), nullptr);
        EXPECT_EQ(failure.GetMessage(), "File Open Failed");
        EXPECT_EQ(failure.GetFile(), "CVioFile");
        EXPECT_EQ(failure.GetSystemMessage(), std::strerror(ENOENT));
        EXPECT_NE(failure.GetLine(), 0);
    }
}

TEST_F(SpoolDirectories, SurvivesManyFirstStartsAtOnce) {
    dir_.Write("dir", "spool_dir:\t\t/spool\nlog_dir:\t\t/log\n");
    RunTogether(16, [&](int) {
        LoadDirectoryConfig("dir", g_tDir);
        if (Slot(DirectorySlot::Log) != "/log" || Queues() != std::vector<std::string>{"101|Default|/spool"})
            throw 1;
    });
}
