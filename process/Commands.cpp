#include "process/Commands.h"

#include <algorithm>
#include <string>

#include "process/HttpPoster.h"
#include "soap/Methods.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

/// Adds one line of a table.
struct LineAdder {
    CommandParameters& command;
    const CommandSource& source;
    const Line& line;

    void operator()(Slot slot) const { Add(line.name, source.texts[slot]); }
    void operator()(std::string (*compute)(const CommandSource&)) const { Add(line.name, compute(source)); }
    void operator()(OtherValue) const { Add(line.name, OtherValueOf(source, line.name)); }
    void operator()(RecipientLine) const {
        Add(MessageCommandOf(source.message->commandCode).recipientLine, source.target);
    }
    void operator()(void (*add)(CommandParameters&, const CommandSource&)) const { add(command, source); }

private:
    void Add(std::string_view name, std::string_view value) const {
        if (line.isNeeded && !value.empty() && command.IsFull()) command.lacksLine = true;
        command.AddParameter(name, value);
    }
};

void AddLines(CommandParameters& command, std::span<const Line> lines, const CommandSource& source) {
    for (const Line& line : lines) std::visit(LineAdder{command, source, line}, line.value);
}

CommandParameters CommandHead(std::string_view word) {
    CommandParameters command;
    command.valueLimit = kFieldCapacity;  // a form body takes no more
    command.AddParameter("cmd", "Cli");
    command.AddParameter("subcmd", word);
    command.AddParameter("modid", "cli");
    return command;
}

/// A line is split at its first "=", so a name is what stands in front of it. Blanks around it are passed over, in case
/// a server does the same.
std::string LineNameOf(std::string_view field) {
    return TrimChars(field.substr(0, field.find('=')), " \t\r\n");
}

bool NamesCommandLine(const TextTriple& pair) {
    static constexpr std::string_view kNames[] = {"cmd", "subcmd", "modid", "adminusername", "adminpassword"};
    const std::string name = LineNameOf(TextOf(pair[0]));
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&](std::string_view own) { return EqualNoCase(own, name); });
}

/// Custom fields are lines of their own names, and with them response actions that stand behind four of them.
bool ForgesCommandLine(const MessagingParameters& message) {
    const auto pairs = PairsOf(message.extras);
    return MessageCommandOf(message.commandCode).recipientLine != nullptr &&
           std::any_of(pairs.begin(), pairs.end(), NamesCommandLine);
}

}  // namespace

const char* RefusalOf(const AdministrationRequest& request, std::string_view method) {
    const std::string_view word = (*request.parameters)[Slot::CommandWord];
    if (!HoldsPrintable(word)) return "Invalid command";
    if (IsMessagingMethod(method)) return nullptr;
    if (request.admin->name[0] == '\0' || request.admin->password[0] == '\0') {
        return "Missing Admin user-name and/or password";
    }
    const Command* command = CommandOf(word);
    if (command == nullptr || command->openTo != OpenTo::Requests) return "Unknown command name";
    for (const Check& check : command->checks) {
        if (!check.holds(request)) return check.refusal;
    }
    return nullptr;
}

const char* RefusalOf(const MessagingParameters& parameters) {
    const bool isForNobody = parameters.recipients.empty() || parameters.recipients.front().empty();
    if (!IsSingleCommand(parameters.commandCode) && isForNobody) return "Missing recipient";
    return ForgesCommandLine(parameters) ? "Invalid custom field name" : nullptr;
}

bool IsMembershipWord(std::string_view word) {
    const Command* command = CommandOf(word);
    return command != nullptr && command->sentFor == SentFor::EachMember;
}

CommandParameters BuildAdministrationCommand(const AdministrationRequest& request, std::size_t member) {
    const AdministrationParameters& parameters = *request.parameters;
    const auto& names = parameters.memberNames;
    const CommandSource source = {.texts = parameters,
                                  .administration = &request,
                                  .target = member < names.size() ? names[member] : std::string_view()};
    const std::string_view word = parameters[Slot::CommandWord];
    CommandParameters command = CommandHead(word);
    AddLines(command, CredentialLines(), source);
    if (const Command* row = CommandOf(word); row != nullptr) AddLines(command, row->lines, source);
    return command;
}

bool IsSingleCommand(int commandCode) {
    return commandCode == kQuickSend || MessageCommandOf(commandCode).recipientLine == nullptr;
}

CommandParameters BuildMessageCommand(const MessagingParameters& message, std::string_view recipient) {
    const MessageCommand& row = MessageCommandOf(message.commandCode);
    CommandParameters command = CommandHead(row.word);
    if (row.recipientLine != nullptr) command.attachment = message.attachment;
    if (!command.attachment.empty()) command.valueLimit = std::string_view::npos;
    AddLines(command, row.lines, {.texts = message, .message = &message, .target = recipient});
    return command;
}

}  // namespace quorbel
