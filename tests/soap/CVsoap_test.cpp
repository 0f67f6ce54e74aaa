#include "soap/CVsoap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "tests/support/ChildProcess.h"
#include "tests/support/RecordingLog.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;

/// Standard input fed from a pipe for one test.
class BodyReaderTest : public testing::Test {
protected:
    void SetUp() override {
        saved_ = dup(STDIN_FILENO);
        ASSERT_EQ(pipe(pipe_), 0);
        dup2(pipe_[0], STDIN_FILENO);
        close(pipe_[0]);
    }
    void TearDown() override {
        EndInput();
        dup2(saved_, STDIN_FILENO);
        close(saved_);
        unsetenv("CONTENT_LENGTH");
    }
    void Send(const std::string& bytes) {
        ASSERT_EQ(write(pipe_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void EndInput() {
        if (pipe_[1] >= 0) close(pipe_[1]);
        pipe_[1] = -1;
    }
    HeapText ReadWithLength(const char* length) {
        if (length != nullptr) setenv("CONTENT_LENGTH", length, 1);
        return ReadRequestBody(log);
    }

    static std::string UnreadInput() {
        char rest[16] = {};
        return {rest, static_cast<std::size_t>(std::max<ssize_t>(read(STDIN_FILENO, rest, sizeof rest), 0))};
    }

    RecordingLog log;

private:
    int saved_ = -1;
    int pipe_[2] = {-1, -1};
};

}  // namespace

TEST_F(BodyReaderTest, ReadsWhatIsAnnouncedAndNoMore) {
    Send("hello world");
    const HeapText body = ReadWithLength(" 5x");
    ASSERT_TRUE(body);
    EXPECT_STREQ(body.get(), "hello");
    EXPECT_THAT(log.entries, ElementsAre("1 CONTENT_LENGTH= 5x", "1 Allocating memory buffer [size=6]",
                                         "1 Reading request data in memory buffer", "1 Data [size=5] read",
                                         "1 Complete request data read in memory buffer: [hello]"));
    EXPECT_EQ(UnreadInput(), " world");
}

TEST_F(BodyReaderTest, TakesABodyThatComesInPieces) {
    const pid_t sender = StartChild([this] {
        Send("hel");
        for (int unread = 1; unread > 0;) ioctl(STDIN_FILENO, FIONREAD, &unread);
        Send("lo world");
    });
    const HeapText body = ReadWithLength("5");
    EXPECT_EQ(WaitForChild(sender), Child::Finished);
    ASSERT_TRUE(body);
    EXPECT_STREQ(body.get(), "hello");
    EXPECT_THAT(log.entries, testing::IsSupersetOf({"1 Data [size=3] read", "1 Data [size=2] read"}));
    EXPECT_EQ(UnreadInput(), " world");
}

TEST_F(BodyReaderTest, RefusesLengthsThatPromiseNothing) {
    EXPECT_FALSE(ReadWithLength(nullptr));
    for (const char* length : {"", "abc", "0", "-5", "99999999999999999999"}) {
        EXPECT_FALSE(ReadWithLength(length)) << length;
    }
}
