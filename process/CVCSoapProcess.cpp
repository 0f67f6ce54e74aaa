#include "process/CVCSoapProcess.h"

#include "soap/AnswerWriter.h"

using namespace quorbel;

CVCSoapProcess soapProcess(&gMsgParameters,
                           {&gParameters, &g_tAdminInfo, &g_tDept, &g_tUser, &g_tUserGroup, &g_tSchd});

void CVCSoapProcess::Run(RunMode mode) {
    mode_ = mode;
    if (mode == RunMode::Messaging) {
        RunMessaging();
    } else {
        RunAdministration();
    }
}

void CVCSoapProcess::Reset() {
    SetEventLog(nullptr);
    ForgetResult();
    ForgetPost();
    resultText_.clear();
    mode_ = RunMode::Administration;
}

void CVCSoapProcess::ShowResult(std::string_view text, std::string_view code) {
    if (mode_ == RunMode::Messaging) {
        FormatResultLine(text, code);
    } else {
        WriteFault(std::string(code) + " " + std::string(text));
    }
}

void CVCSoapProcess::ShowReply(std::string_view text) {
    if (mode_ == RunMode::Messaging) resultText_ = text;
    WriteResponse(text);
}
