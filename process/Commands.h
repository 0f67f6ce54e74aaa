#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "process/CommandRecords.h"

namespace quorbel {

/// What the lines of one command are made from: the texts of a request and either its administration records or
/// its message. All borrowed.
struct CommandSource {
    const SlotTexts& texts;
    const AdministrationRequest* administration = nullptr;
    const MessagingParameters* message = nullptr;
    std::string_view target;  ///< the member or the recipient that this command is for
};

/// Stands for the request's other value of the line's own name.
struct OtherValue {};
/// Stands for the line of the recipient, whose name depends on the kind of send.
struct RecipientLine {};

/// Where a line's value comes from: the request's text in a slot, a function, one of the above; or a function
/// that adds lines of its own.
using LineValue = std::variant<Slot, std::string (*)(const CommandSource&), OtherValue, RecipientLine,
                               void (*)(CommandParameters&, const CommandSource&)>;

/// One line of a command. It is left out when its value is empty.
struct Line {
    const char* name;  ///< empty where the value names the line
    LineValue value;
    bool isNeeded = false;  ///< a command that has no room for this line must not be posted
};

/// One condition of a command and the text of the fault when it does not hold.
struct Check {
    bool (*holds)(const AdministrationRequest&);
    const char* refusal;
};

/// Who may send a command: SOAP requests, or only programs that link the command process.
enum class OpenTo { Requests, Programs };
enum class SentFor { Request, EachMember };

/// One command that administers the server.
struct Command {
    std::string_view word;  ///< the line "subcmd"; exact spelling
    std::span<const Line> lines;
    std::span<const Check> checks = {};  ///< in the order in which they are made
    OpenTo openTo = OpenTo::Requests;
    SentFor sentFor = SentFor::Request;
};

/// One command that sends, queries or confirms messages.
struct MessageCommand {
    int code;
    std::string_view action;  ///< recorded by the SOAP method that leads here; empty for none
    std::string_view word;    ///< the line "subcmd"; a send has none
    std::span<const Line> lines;
    const char* recipientLine = nullptr;  ///< null for a command that is no send
};

/// The request's other value of this name; empty when there is none.
std::string_view OtherValueOf(const CommandSource& source, std::string_view name);

/// The lines that follow the head of every administration command.
std::span<const Line> CredentialLines();

/// Null for an unknown word.
const Command* CommandOf(std::string_view word);

/// A code without a row of its own is a standard send.
const MessageCommand& MessageCommandOf(int code);
/// Any letter case; an action without a row of its own is a standard send.
const MessageCommand& MessageCommandOf(std::string_view action);

// The loop over the tables: which requests are refused, and the commands of those that are not.

/// Why an administration request may not be posted, as the text of a fault "2004"; null when it may. `method`
/// is the SOAP method's name; messaging methods pass with any valid command word.
const char* RefusalOf(const AdministrationRequest& request, std::string_view method);

/// Why a message may not be posted, as above: nobody to send it to, or a custom field named like a line of the
/// command itself.
const char* RefusalOf(const MessagingParameters& parameters);

/// True for the four words that add or remove group members, one command for each member.
bool IsMembershipWord(std::string_view word);

/// The command for one member of the request (0 for requests without members). A word that no row knows gives
/// the common lines alone.
CommandParameters BuildAdministrationCommand(const AdministrationRequest& request, std::size_t member);

/// True when the request's code builds one command that names no recipient list: a query, a confirmation, a
/// rejection or a quick send. Any other code is a standard send, one command for each recipient.
bool IsSingleCommand(int commandCode);

/// The command that sends a message to one recipient, or asks about or answers a message.
CommandParameters BuildMessageCommand(const MessagingParameters& message, std::string_view recipient);

}  // namespace quorbel
