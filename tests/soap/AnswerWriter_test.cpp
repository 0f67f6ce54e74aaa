#include "soap/AnswerWriter.h"

#include <gtest/gtest.h>

#include "soap/CVsoap.h"
#include "util/BoundedText.h"

using namespace quorbel;

namespace {

/// What `write` puts on standard output.
template <typename Writes>
std::string Written(Writes write) {
    testing::internal::CaptureStdout();
    write();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

class AnswerWriterTest : public testing::Test {
protected:
    void SetUp() override {
        CopyText(m_szHostName, "pager-host");
        CopyText(g_szCommand, "SendStdMessage");
    }
    void TearDown() override { BeginAnswer(); }
};

}  // namespace

TEST_F(AnswerWriterTest, NothingFollowsAFault) {
    const auto first = Written([] { WriteFault("2301 Invalid log directory"); });
    EXPECT_NE(first.find("<faultstring>2301 Invalid log directory</faultstring>"), std::string::npos);
    EXPECT_EQ(Written([] { WriteResponse("OK"); }), "");
    EXPECT_EQ(Written([] { WriteFault("2012", "again"); }), "");
}
