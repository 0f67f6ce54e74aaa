#include "process/CVCProcess.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "process/Commands.h"
#include "process/HttpPoster.h"
#include "syslib/CVLogInterface.h"
#include "util/BoundedText.h"
#include "util/FormatExpansion.h"
#include "util/SpoolDirectories.h"

using namespace quorbel;

namespace {

constexpr std::size_t kOutputSize = 100UL << 20;  ///< no reply is cut in practice
constexpr std::size_t kReportSize = 2048;
constexpr std::size_t kKeptOutput = 200;
constexpr char kTransportFailure[] = "2012";
constexpr int kOutOfMemory = 27;        ///< the transport's code
constexpr int kNoReplyMessage = 55001;  ///< the catalogue's text for a post that brought back no text at all

/// The text of a reply. Half a reply, or an empty one, could be taken for success: where memory was short, the text
/// says that alone.
const char* OutputOf(const TextBuffer& reply) {
    if (reply.LacksMemory()) return TransportErrorText(kOutOfMemory);
    return reply.data() == nullptr ? "" : reply.data();
}

/// The catalogue in the configuration directory if there is one, else the one in the fixed directory.
std::string CatalogueText(int id) {
    CVMessageManager::PreferDirectory(g_strConfigDir);
    return CVMessageManager::GetMessage(id);
}

}  // namespace

void CVCProcess::SetEventLog(CVLogInterface* log) {
    log_ = log;
}

void CVCProcess::SetCaFilePath(const char* path) {
    caFilePath_ = path == nullptr ? "" : path;
}

void CVCProcess::PrepareCommand(std::size_t) {}

void CVCProcess::FinishCommand() {}

int CVCProcess::Send(CommandParameters& command, std::string_view url, std::string_view url2,
                     std::string* outputCopy) {
    ForgetPost();
    TextBuffer reply;
    PostReport report;
    const int result = command.lacksLine
                           ? kOutOfMemory
                           : PostForReply(reply, kOutputSize, command, {url, url2, caFilePath_}, &report);
    const char* output = command.lacksLine ? TransportErrorText(kOutOfMemory) : OutputOf(reply);
    if (!command.lacksLine && !url.empty()) lastPost_ = report;
    lastOutput_ = std::string_view(output).substr(0, kKeptOutput);
    if (result != 0) {
        ReportFailure(output);
    } else if (log_ != nullptr) {
        log_->Info(nullptr, "%s\n", output);
    }
    const std::string_view text = std::string_view(output).substr(0, kOutputSize - 1);
    if (outputCopy != nullptr) *outputCopy = text;
    ShowReply(text);
    return result;
}

void CVCProcess::ForgetPost() {
    lastPost_.reset();
    lastOutput_.clear();
}

void CVCProcess::ReportFailure(const char* output) {
    if (log_ != nullptr) log_->Error(nullptr, "Send process aborted.\n");
    // Kept for compatibility: the output itself is the format, so "%%" stands for "%".
    const std::string catalogueText = *output != '\0' ? "" : CatalogueText(kNoReplyMessage);
    const std::string_view text = *output != '\0' ? std::string_view(output) : catalogueText;
    // One byte more than a report holds, so that the report sees that it is cut.
    const std::string expanded = ExpandWithoutArguments(text, kReportSize);
    if (!text.empty()) ReportError(kTransportFailure, "%s", expanded.c_str());
}

void CVCProcess::ReportError(const char* code, const char* format, ...) {
    if (format == nullptr || *format == '\0') return;
    char text[kReportSize] = {};
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const bool isCut = wanted >= static_cast<int>(sizeof text);
    ShowResult(isCut ? WithoutIncompleteEnd(text) : std::string_view(text), code);
}

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
