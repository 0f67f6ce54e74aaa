#include "process/CVCCoradmProcess.h"

#include <algorithm>

#include "process/Commands.h"

using namespace quorbel;

void CVCCoradmProcess::PrepareCommand(std::size_t member) {
    command_ = BuildAdministrationCommand(request_, member);
}

void CVCCoradmProcess::FinishCommand() {
    command_ = {};
}

int CVCCoradmProcess::SendCommand(std::size_t member) {
    const AdministrationParameters& parameters = *request_.parameters;
    PrepareCommand(member);
    const std::string_view url2 = failoverUrl_.empty() ? parameters[Slot::Url2] : failoverUrl_;
    const int result = Send(command_, parameters[Slot::Url], url2);
    FinishCommand();
    return result;
}

void CVCCoradmProcess::RunAdministration() {
    const AdministrationParameters& parameters = *request_.parameters;
    if (parameters.allMembers == 1 || !IsMembershipWord(parameters[Slot::CommandWord])) {
        SendCommand(0);
        return;
    }
    const std::size_t count = std::min(parameters.memberNames.size(), kMaxMembers);
    for (std::size_t i = 0; i < count && !parameters.memberNames[i].empty(); ++i) {
        if (SendCommand(i) != 0) return;
    }
}
