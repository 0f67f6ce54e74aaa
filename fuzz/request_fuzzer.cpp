// Feeds arbitrary bodies through parse, translate and build. Coverage-guided: build with clang and run as fuzz/README.md tells.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/FuzzSupport.h"
#include "process/Commands.h"
#include "process/HttpPoster.h"
#include "process/Translation.h"
#include "soap/CVsoap.h"
#include "soap/CVsoapParser.h"
#include "syslib/CVLogInterface.h"

using namespace quorbel;

namespace {

class NoLog : public CVLogInterface {
protected:
    int WriteEntry(const Entry&, va_list) override { return 0; }
};

void BuildMessage(const RequestRecord& record) {
    const MessagingParameters parameters = TranslateMessaging(record);
    const CommandParameters command = BuildMessageCommand(parameters, parameters.recipients.front());
    Require(command.lines.size() <= CommandParameters::kMaxLines);
    const TextBuffer body = BuildFormBody(command.lines);
    Require(body.Text().find_first_of("\r\n <") == std::string_view::npos);
}

void BuildAdministration(const RequestRecord& record) {
    g_tAdminInfo = TranslateAdmin(record);
    g_tDept = TranslateDepartment(record);
    g_tUser = TranslateUser(record);
    g_tUserGroup = TranslateUserGroup(record);
    gParameters = TranslateAdministration(record);
    const AdministrationRequest request = {&gParameters, &g_tAdminInfo, &g_tDept,
                                           &g_tUser,     &g_tUserGroup, &g_tSchd};
    if (RefusalOf(request, g_szCommand) == nullptr)
        BuildFormBody(BuildAdministrationCommand(request, 0).lines);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    NoLog log;
    RequestRecord record;
    if (ParseEnvelope(input.c_str(), record, log) == 1) {
        BuildMessage(record);
        BuildAdministration(record);
    }
    return 0;
}
