#include "process/Translation.h"

#include "process/AdministrationDispatch.h"
#include "process/AdministrationTranslation.h"
#include "process/CVCSoapProcess.h"
#include "process/MessageCommands.h"
#include "process/MessagingTranslation.h"
#include "soap/AnswerWriter.h"
#include "soap/MethodTable.h"
#include "soap/RequestGlobals.h"
#include "syslib/CVsysEventLogInterface.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kRefused[] = "2004";
constexpr char kSource[] = "CVsoap";

/// Writes the error entry and the fault of a request that is not posted.
void Refuse(const char* reason) {
    CVsysEventLogInterface::GetInstance(__LINE__, kSource)->Error(nullptr, "%s\n", reason);
    WriteFault(kRefused, reason);
}

void FillAdministrationRecords(const RequestRecord& record) {
    g_tAdminInfo = TranslateAdmin(record);
    g_tDept = TranslateDepartment(record);
    g_tUser = TranslateUser(record);
    g_tUserGroup = TranslateUserGroup(record, currentMethodCode);
    gParameters = TranslateAdministration(record);
}

/// Keeps the addresses for the run; true when the first can be posted to at all.
bool TakeAddresses(const std::string& url, const std::string& url2) {
    gArguments.url = url;
    gArguments.url2 = url2;
    return HoldsPrintable(url);
}

void AttachLog() {
    soapProcess.SetEventLog(CVsysEventLogInterface::GetInstance(__LINE__, kSource));
}

void RunAdministration() {
    if (TakeAddresses(gParameters.url, gParameters.url2)) {
        AttachLog();
        soapProcess.Run(RunMode::Administration);
    } else {
        Refuse("Missing URL");
    }
    gParameters = {};
}

/// A message for nobody posts nothing; the client must not take silence for success.
bool LacksRecipient(const MessagingParameters& parameters) {
    return !IsSingleCommand(parameters.commandCode) && parameters.recipients.front().empty();
}

void RunMessaging(const RequestRecord& record) {
    gMsgParameters = TranslateMessaging(record);
    if (!TakeAddresses(gMsgParameters.url, gMsgParameters.url2)) {
        Refuse("Missing URL");
        AttachLog();
        WriteResponse(soapProcess.ResultText());
    } else if (LacksRecipient(gMsgParameters)) {
        Refuse("Missing recipient");
    } else {
        soapProcess.Run(RunMode::Messaging);
    }
}

}  // namespace

int TranslateRequest(const RequestRecord& record) {
    FillAdministrationRecords(record);
    const AdministrationRequest request = {&gParameters, &g_tAdminInfo, &g_tDept,
                                           &g_tUser,     &g_tUserGroup, &g_tSchd};
    if (const char* reason = RefusalOf(request, g_szCommand); reason != nullptr) {
        Refuse(reason);
        return 0;
    }
    if (IsMessagingMethod(g_szCommand)) {
        RunMessaging(record);
    } else {
        RunAdministration();
    }
    return 1;
}

}  // namespace quorbel
