#include "resident/Report.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/SystemLogRecorder.h"

using namespace quorbel;

namespace {

/// What comes out of standard error, of which the journal is said to read the stream of this inode.
std::string ToldWhereJournalReads(ino_t offset) {
    testing::internal::CaptureStderr();
    struct stat status = {};
    fstat(STDERR_FILENO, &status);
    const std::string stream = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino + offset);
    setenv("JOURNAL_STREAM", stream.c_str(), 1);
    ReportInfo("workers 8");
    unsetenv("JOURNAL_STREAM");
    return testing::internal::GetCapturedStderr();
}

}  // namespace

TEST(Report, StandsInTheJournalOnce) {
    EXPECT_EQ(ToldWhereJournalReads(0), "");
    EXPECT_EQ(TakeSystemLog().size(), 1u);
    EXPECT_EQ(ToldWhereJournalReads(1), "quorbel-soapd: workers 8\n") << "of another stream";
}
