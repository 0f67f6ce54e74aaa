#include "process/CVCCommandProcess.h"

#include <algorithm>
#include <cstdio>

#include "process/Commands.h"

using namespace quorbel;

namespace {

constexpr char kNoJobId[] = "99999999";

int Width(std::string_view text) {
    return static_cast<int>(std::min<std::size_t>(text.size(), 1024));
}

}  // namespace

const char* CVCCommandProcess::FormatResultLine(std::string_view text, std::string_view code) {
    const std::string_view given = (*parameters_)[Slot::JobId];
    const std::string_view jobId = given.empty() ? kNoJobId : given;
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
    const auto& recipients = parameters_->recipients;
    if (IsSingleCommand(parameters_->commandCode)) {
        SendCommand(recipients.empty() ? std::string_view() : recipients.front());
        return;
    }
    const std::size_t count = std::min(recipients.size(), kMaxRecipients);
    for (std::size_t i = 0; i < count && !recipients[i].empty(); ++i) SendCommand(recipients[i]);
}

void CVCCommandProcess::SendCommand(std::string_view recipient) {
    CommandParameters command = BuildMessageCommand(*parameters_, recipient);
    Send(command, (*parameters_)[Slot::Url], (*parameters_)[Slot::Url2]);
}
