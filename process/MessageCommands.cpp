#include "process/MessageCommands.h"

#include <algorithm>

#include "process/CommandLines.h"

namespace quorbel {

namespace {

using Message = MessagingParameters;
using Line = CommandLine<Message>;

std::string Cli(const Message&) {
    return "Cli";
}
std::string CliModule(const Message&) {
    return "cli";
}
std::string JobId(const Message& m) {
    return m.jobId;
}
std::string Comments(const Message& m) {
    return m.comments;
}
std::string Confirmer(const Message& m) {
    return m.confirmer;
}
std::string FirstRecipient(const Message& m) {
    return m.recipients.empty() ? "" : m.recipients.front();
}

template <char const* Word>
std::string Constant(const Message&) {
    return Word;
}

constexpr char kQueryStatusWord[] = "query_status";
constexpr char kQueryLastWord[] = "query_last_msg";
constexpr char kConfirmWord[] = "confirm";
constexpr char kRejectWord[] = "reject";
constexpr char kHistoryWord[] = "queryjobhistory";
constexpr char kGroupMessageWord[] = "queryjobgroupmsg";

constexpr Line kCmd = {"cmd", Cli};
constexpr Line kModule = {"modid", CliModule};

constexpr Line kQueryStatusLines[] = {
    kCmd, {"subcmd", Constant<kQueryStatusWord>}, kModule, {"jobid", JobId}};
constexpr Line kQueryLastLines[] = {kCmd,
                                    {"subcmd", Constant<kQueryLastWord>},
                                    kModule,
                                    {"rcv_name", FirstRecipient},
                                    {"securitycode", [](const Message& m) { return m.securityCode; }}};
constexpr Line kConfirmLines[] = {kCmd,
                                  {"subcmd", Constant<kConfirmWord>},
                                  kModule,
                                  {"jobid", JobId},
                                  {"comments", Comments},
                                  {"conf_by", Confirmer}};
constexpr Line kRejectLines[] = {kCmd,
                                 {"subcmd", Constant<kRejectWord>},
                                 kModule,
                                 {"jobid", JobId},
                                 {"comments", Comments},
                                 {"conf_by", Confirmer}};
constexpr Line kHistoryLines[] = {kCmd, {"subcmd", Constant<kHistoryWord>}, kModule, {"jobid", JobId}};
constexpr Line kGroupMessageLines[] = {
    kCmd, {"subcmd", Constant<kGroupMessageWord>}, kModule, {"jobmajorid", JobId}};

struct QueryCommand {
    int code;
    std::span<const Line> lines;
};
constexpr QueryCommand kQueryCommands[] = {
    {kQueryStatus, kQueryStatusLines}, {kQueryLastMessage, kQueryLastLines},
    {kConfirm, kConfirmLines},         {kReject, kRejectLines},
    {kQueryHistory, kHistoryLines},    {kQueryGroupMessage, kGroupMessageLines},
};

const QueryCommand* QueryCommandFor(int code) {
    const auto* row = std::find_if(std::begin(kQueryCommands), std::end(kQueryCommands),
                                   [code](const QueryCommand& command) { return command.code == code; });
    return row == std::end(kQueryCommands) ? nullptr : row;
}

// A message: the lines in front of the recipient's, those behind it, and what each kind of send adds.

constexpr Line kHeadLines[] = {kCmd,
                               kModule,
                               {"sender", [](const Message& m) { return m.sender; }},
                               {"email_subject", [](const Message& m) { return m.subject; }}};
constexpr Line kTailLines[] = {{"priority", [](const Message& m) { return m.priority; }},
                               {"nametime", [](const Message& m) { return m.timeStamp; }},
                               {"email_receipt", [](const Message& m) { return m.forwardReply; }},
                               {"jobid", JobId}};
constexpr Line kStandardLines[] = {{"message", [](const Message& m) { return m.message; }}};
constexpr Line kQuickLines[] = {{"pin", [](const Message& m) { return m.pin; }},
                                {"message", [](const Message& m) { return m.message; }},
                                {"alt_pin", [](const Message& m) { return m.alternatePin; }},
                                {"alt_carrier_name", [](const Message& m) { return m.alternateCarrier; }}};

struct RecipientLine {
    int code;
    const char* name;
};
constexpr RecipientLine kRecipientLines[] = {
    {kReceiverSend, "rcv_name"}, {kGroupSend, "grp_name"},     {kCascadeSend, "casc_name"},
    {kDutySend, "duty_name"},    {kQuickSend, "carrier_name"}, {kRotationSend, "rota_name"},
    {kFollowSend, "foll_name"},
};

const char* RecipientLineName(int code) {
    for (const auto& row : kRecipientLines) {
        if (row.code == code) return row.name;
    }
    return "name";
}

/// The template's parameters, up to the first whose name or value is missing.
void AddTemplatePairs(CommandParameters& command, const Message& message) {
    const std::size_t count =
        std::min({message.templateNames.size(), message.templateValues.size(), kMaxTemplatePairs});
    for (std::size_t i = 0; i < count; ++i) {
        if (message.templateNames[i].empty() || message.templateValues[i].empty()) return;
        command.AddParameterPair("param", message.templateNames[i], "value", message.templateValues[i]);
    }
}

void AddFormLines(CommandParameters& command, const Message& message) {
    if (message.form == kVoiceForm) {
        command.AddParameter("content_type", "voice");
        if (message.templateName.empty()) return;
        command.AddParameter("template", message.templateName);
        AddTemplatePairs(command, message);
    } else if (message.form == kFaxForm) {
        command.AddParameter("content_type", "fax");
        command.AddParameter("cover_page", message.coverPage);
    }
}

constexpr std::size_t kPairSlots = 256;  ///< how far the walk over pairs goes

/// Response actions up to the first empty slot, then pairs from the first slot on. With all custom field
/// slots taken, the pairs go on into the response actions: receivers of messages have always got those lines,
/// too.
void AddExtraLines(CommandParameters& command, const ExtraSlots& slots) {
    for (std::size_t i = kCustomFieldSlots; i < slots.size() && slots[i]; ++i) {
        const auto& [action, response, final] = *slots[i];
        command.AddParameter("response", response);
        command.AddParameter("action", action);
        command.AddParameter("final", final);
    }
    for (std::size_t i = 0; i < kPairSlots && slots[i]; ++i) {
        command.AddParameter((*slots[i])[0], (*slots[i])[1]);
    }
}

CommandParameters BuildSend(const Message& message, const std::string& recipient,
                            std::span<const Line> bodyLines) {
    CommandParameters command;
    AddLines<Message>(command, kHeadLines, message);
    AddFormLines(command, message);
    command.AddParameter(RecipientLineName(message.commandCode), recipient);
    AddLines<Message>(command, kTailLines, message);
    AddLines<Message>(command, bodyLines, message);
    AddExtraLines(command, message.extras);
    command.attachment = message.attachment;
    return command;
}

}  // namespace

bool IsSingleCommand(int commandCode) {
    return commandCode == kQuickSend || QueryCommandFor(commandCode) != nullptr;
}

CommandParameters BuildSingleCommand(const MessagingParameters& parameters) {
    if (parameters.commandCode == kQuickSend) {
        return BuildSend(parameters, FirstRecipient(parameters), kQuickLines);
    }
    CommandParameters command;
    AddLines<Message>(command, QueryCommandFor(parameters.commandCode)->lines, parameters);
    return command;
}

CommandParameters BuildSendCommand(const MessagingParameters& parameters, const std::string& recipient) {
    return BuildSend(parameters, recipient, kStandardLines);
}

}  // namespace quorbel
