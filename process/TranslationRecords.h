#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

// The command records: what request translation makes of a parsed request, and what the command processes
// build their lines from. Lists grow as they are filled, because strings that no request uses would cost
// every start-up; an entry beyond the end reads as empty.

inline constexpr std::size_t kMaxRecipients = 1024;
inline constexpr std::size_t kMaxMembers = 1024;
inline constexpr std::size_t kMaxTemplatePairs = 1536;

/// A custom field (name, value, nothing) or a response action (action, response, final).
using ExtraTriple = std::array<std::string, 3>;

inline constexpr std::size_t kCustomFieldSlots = 4;
inline constexpr std::size_t kResponseActionSlots = 256;

/// The custom fields and, behind them, the response actions of a message. Receivers of messages know both
/// walks over it: pairs from the first slot on, which do not stop where the response actions begin, and
/// triples from there.
using ExtraSlots = std::array<std::optional<ExtraTriple>, kCustomFieldSlots + kResponseActionSlots>;

/// What a message's command is built for; the numbers are the server's.
enum CommandCode : int {
    kNoCommandCode = 0,
    kReceiverSend = 512,
    kGroupSend = 513,
    kCascadeSend = 514,
    kDutySend = 515,
    kQuickSend = 516,
    kQueryStatus = 517,
    kQueryLastMessage = 518,
    kRotationSend = 519,
    kFollowSend = 520,
    kConfirm = 521,
    kReject = 522,
    kStandardSend = 523,
    kQueryHistory = 524,
    kQueryGroupMessage = 525,
};

enum MessageForm : int { kPlainForm = 0, kVoiceForm = 1, kFaxForm = 2 };

/// A messaging request as its command needs it.
struct MessagingParameters {
    std::vector<std::string> recipients;  ///< at most kMaxRecipients; walked up to the first empty one
    std::string timeStamp;                ///< "true" or empty
    std::string priority;
    std::string forwardReply;  ///< "yes" or empty
    std::string message;
    std::string pin;
    std::string url;
    std::string url2;
    std::string jobId;
    std::string alternateCarrier;
    std::string alternatePin;
    std::string sender;
    std::string subject;
    // No element of a SOAP request fills the next nine; programs that link the command process do.
    std::string securityCode;
    std::string coverPage;
    std::string attachment;
    std::string templateName;
    std::vector<std::string> templateNames;   ///< at most kMaxTemplatePairs
    std::vector<std::string> templateValues;  ///< at most kMaxTemplatePairs
    std::string comments;
    std::string confirmer;
    int form = kPlainForm;
    int commandCode = kNoCommandCode;
    ExtraSlots extras;
};

/// An administration request as its command needs it. Flags are 1 when set.
struct AdministrationParameters {
    std::string url;
    std::string url2;
    std::string command;  ///< the server's command word
    std::string objectName;
    std::vector<std::string> memberNames;  ///< at most kMaxMembers; walked up to the first empty one
    std::string memberKind;                ///< "receiver" or "group"
    std::string newName;                   ///< no element fills it
    std::string topic;                     ///< no element fills it
    std::string groupType;
    std::string department;
    std::string description;
    std::string user;
    std::string receiver;
    std::string receiverType;
    std::string pin;
    std::string carrier;
    std::string backupPin;
    std::string backupCarrier;
    std::string voiceEnable;
    std::string receiverTimeZone;
    std::string keepAlpha;
    std::string receiverEmail;
    std::string emailFailover;
    std::string emailCc;
    std::string voiceNumber;
    std::string firstName;
    std::string lastName;
    std::string securityCode;
    std::string accountName;
    std::string accountPassword;
    std::string canUpdateReceiver;
    std::string canUpdateSchedule;
    std::string deviceStatus;
    std::string forwardTo;
    std::string delay;  ///< no command line carries it
    int enableOwnerSettings = 0;
    int alertOwner = 0;
    int limitAccess = 0;
    int allMembers = 0;          ///< no element sets it
    int recipientUserGroup = 0;  ///< no element sets it
    int disable = 0;             ///< no element sets it
    /// Lines of the objects that no SOAP method reaches, by line name. Translation leaves it empty.
    std::vector<std::pair<std::string, std::string>> otherValues;
};

}  // namespace quorbel

/// Both are written by request translation only, and live for the whole run.
extern quorbel::MessagingParameters gMsgParameters;
extern quorbel::AdministrationParameters gParameters;
