#include "process/CVCCommandProcess.h"

#include <algorithm>
#include <cstdio>

#include "process/MessageCommands.h"

using namespace quorbel;

namespace {

constexpr char kNoJobId[] = "99999999";

int Width(std::string_view text) {
    return static_cast<int>(std::min<std::size_t>(text.size(), 1024));
}

}  // namespace

const char* CVCCommandProcess::FormatResultLine(std::string_view text, std::string_view code) {
    const std::string_view jobId =
        parameters_->jobId.empty() ? kNoJobId : std::string_view(parameters_->jobId);
    std::snprintf(resultLine_, sizeof resultLine_, "%.*s %.*s \"%.*s\"\n", Width(code), code.data(),
                  Width(jobId), jobId.data(), Width(text), text.data());
    return resultLine_;
}

void CVCCommandProcess::ShowResult(std::string_view text, std::string_view code) {
    std::printf("%s", FormatResultLine(text, code));
}

void CVCCommandProcess::ShowReply(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::putchar('\n');
}

void CVCCommandProcess::RunMessaging() {
    if (IsSingleCommand(parameters_->commandCode)) {
        SendCommand(BuildSingleCommand(*parameters_));
    } else {
        const auto& recipients = parameters_->recipients;
        for (std::size_t i = 0; i < std::min(recipients.size(), kMaxRecipients) && !recipients[i].empty();
             ++i) {
            SendCommand(BuildSendCommand(*parameters_, recipients[i]));
        }
    }
}

void CVCCommandProcess::SendCommand(CommandParameters command) {
    Send(command, parameters_->url, parameters_->url2);
}
