#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "soap/RequestRecord.h"

namespace quorbel {

/// One command of the server's command interface: its lines "name=value" in the order in which they are
/// posted, and the file to attach, if any. The builders below never fail: a line that lacks what it needs, or
/// finds no room, is left out.
struct CommandParameters {
    static constexpr std::size_t kMaxLines = 1024;

    std::vector<std::string> lines;  ///< an empty one stands for none and is not posted
    std::size_t count = 0;           ///< how many of them are posted
    std::string attachment;          ///< a file path; non-empty makes the post a multipart form
    bool lacksLine = false;          ///< a line that it is nothing without found no room: not to be posted
    std::size_t valueLimit = std::string_view::npos;  ///< bytes of a value that is added; the rest is cut

    /// Adds name=value when both are non-empty and there is room.
    void AddParameter(std::string_view name, std::string_view value);
    /// Sets the line at `index`, which must be below kMaxLines, and leaves the count alone.
    void SetParameter(std::size_t index, std::string_view name, std::string_view value);
    /// Adds both lines when the first is complete, the second has a name and there is room for both; the
    /// second's value may be empty.
    void AddParameterPair(std::string_view name1, std::string_view value1, std::string_view name2,
                          std::string_view value2);
    /// Adds name=on when `flag` is exactly 1.
    void AddFlag(std::string_view name, int flag);
    void AddNumber(std::string_view name, int number);

    bool IsFull() const { return count >= kMaxLines; }
    std::span<std::string> Posted() { return {lines.data(), std::min(count, lines.size())}; }

private:
    void Add(std::string_view name, std::string_view value);
};

// The command records: what request translation makes of a parsed request, and what the command processes
// build their lines from. Lists grow as they are filled, because strings that no request uses would cost
// every start-up; an entry beyond the end reads as empty.

inline constexpr std::size_t kMaxRecipients = 1024;
inline constexpr std::size_t kMaxMembers = 1024;
inline constexpr std::size_t kMaxTemplatePairs = 1536;

inline constexpr std::size_t kCustomFieldSlots = 4;
inline constexpr std::size_t kResponseActionSlots = 256;

inline constexpr std::size_t kExtraSlots = kCustomFieldSlots + kResponseActionSlots;

/// The custom fields (name, value, nothing) and, behind them, the response actions (action, response, final) of
/// a message, in at most kExtraSlots slots; an empty slot holds no text at all. Ends where the last filled one does:
/// slots that no message fills would cost each of them.
using ExtraSlots = std::vector<TextTriple>;
static_assert(kExtraSlots <= RequestItems::kMaxKept);

/// The response actions up to the first empty slot.
std::span<const TextTriple> ActionsOf(const ExtraSlots& slots);
/// The texts that are sent as lines name=value: 256 slots at most, from the first on up to the first empty one.
/// Kept for compatibility: the walk does not stop where the response actions begin.
std::span<const TextTriple> PairsOf(const ExtraSlots& slots);

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

/// A messaging request as its command needs it: the request's texts, with Slot::TimeStamp "true" or absent and
/// Slot::ForwardReply "yes" or absent.
struct MessagingParameters : SlotTexts {
    std::vector<std::string> recipients;  ///< at most kMaxRecipients; walked up to the first empty one
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

/// An administration request as its command needs it: the request's texts, the server's command word in
/// Slot::CommandWord, and flags, which are 1 when set.
struct AdministrationParameters : SlotTexts {
    std::vector<std::string> memberNames;  ///< at most kMaxMembers; walked up to the first empty one
    std::string newName;                   ///< no element fills it
    std::string topic;                     ///< no element fills it
    int enableOwnerSettings = 0;
    int alertOwner = 0;
    int limitAccess = 0;
    int allMembers = 0;          ///< no element sets it
    int recipientUserGroup = 0;  ///< no element sets it
    int disable = 0;             ///< no element sets it
    /// Lines of the objects that no SOAP method reaches, by line name. Translation leaves it empty.
    std::vector<std::pair<std::string, std::string>> otherValues;
};

// The fixed-width records of an administration request. Request translation writes them from the request
// record; checks and command lines read them. Values are cut silently at
// the width less one. Flags are 1 or 0.

struct AdminInfo {
    char name[101];
    char password[101];
};

struct DepartmentInfo {
    char name[101];
    char description[101];
    char newName[101];  ///< no element fills it
};

struct UserInfo {
    char userName[101];
    char newUserName[101];
    char password[101];
    char description[101];
    char userGroup[101];
    char ip[51];
    char email[101];
    int gui;
    int cli;
    int resultToEmail;
    char accessCode[20];
    char timeZone[50];     ///< 49 characters
    char accountType[52];  ///< no element fills it
    char linkUserName[101];
    char linkPassword[101];
    char dbHost[101];
    char appHost[101];  ///< no element fills it
    char ntUserName[101];
    char ntPassword[101];
    char ntDomain[101];
    char authentication[10];  ///< 9 characters
};

/// A permission that a request grants: the number of its slot, as text.
struct PermissionEntry {
    char slot[30];
};

struct UserGroupInfo {
    char name[101];
    char newName[101];  ///< no element fills it
    char description[101];
    char departmentName[101];
    char permissionSet[101];
    int permissionCount;
    PermissionEntry permissions[36];  ///< one for each permission slot of a request
};

/// The texts of a schedule command. No SOAP method fills them; programs that link the command process do.
struct ScheduleInfo {
    char name[101];
    char scheduleName[101];
    char scheduleType[51];
    char startHour[12];
    char startMinute[12];
    char endHour[12];
    char endMinute[12];
    char startDate[51];
    char endDate[51];
    char recurrences[12];
    char weekdays[51];
    char every[12];
    char dayOfMonth[12];
    char weekOfMonth[12];
    char dayOfWeek[12];
    char forDays[12];
    char memberName[101];
    char memberType[51];
    char delay[12];
};

/// What an administration command is built from; all records are borrowed.
struct AdministrationRequest {
    const AdministrationParameters* parameters;
    const AdminInfo* admin;
    const DepartmentInfo* department;
    const UserInfo* user;
    const UserGroupInfo* userGroup;
    const ScheduleInfo* schedule;
};

}  // namespace quorbel

// All but g_tSchd are written by request translation, for the rest of the run.
extern quorbel::MessagingParameters gMsgParameters;
extern quorbel::AdministrationParameters gParameters;
extern quorbel::AdminInfo g_tAdminInfo;
extern quorbel::DepartmentInfo g_tDept;
extern quorbel::UserInfo g_tUser;
extern quorbel::UserGroupInfo g_tUserGroup;
extern quorbel::ScheduleInfo g_tSchd;  ///< written by programs that link the command process
