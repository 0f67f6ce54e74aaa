#include "process/ServeRequest.h"

#include <gtest/gtest.h>

#include "process/CVCSoapProcess.h"
#include "soap/AnswerWriter.h"
#include "soap/CVsoap.h"
#include "tests/support/LoopbackServer.h"
#include "util/BoundedText.h"

using namespace quorbel;

TEST(ServeRequest, NothingOfARunReachesTheNext) {
    CopyText(g_szCommand, "AddUser");
    CopyText(g_tAdminInfo.password, "secret");
    CopyText(g_tUser.password, "secret");
    gArguments.url = std::make_shared<TextBuffer>("http://secret/");
    gMsgParameters.Set(Slot::Url, DeadUrl());
    gMsgParameters.commandCode = kConfirm;
    testing::internal::CaptureStdout();
    soapProcess.Run(RunMode::Messaging);
    WriteFault("2004", "of the run before");
    testing::internal::GetCapturedStdout();

    ResetRun();
    EXPECT_STREQ(g_szCommand, "");
    EXPECT_EQ(std::string(g_tAdminInfo.password) + g_tUser.password, "");
    EXPECT_EQ(gArguments.url, nullptr);
    EXPECT_FALSE(gMsgParameters.Has(Slot::Url));
    EXPECT_EQ(soapProcess.ResultText() + soapProcess.ResultLine(), "");
    testing::internal::CaptureStdout();
    WriteFault("2004", "of this run");
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    WriteResponse("OK");
    WriteFault("2012", "again");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "a second document";
    ResetRun();
}
