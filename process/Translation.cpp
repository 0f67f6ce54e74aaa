#include "process/Translation.h"

#include <algorithm>
#include <string>

#include "process/AllowedServers.h"
#include "process/CVCSoapProcess.h"
#include "process/Commands.h"
#include "soap/AnswerWriter.h"
#include "soap/CVsoap.h"
#include "soap/Methods.h"
#include "syslib/CVsysEventLogInterface.h"
#include "util/BoundedText.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kRefused[] = "2004";
constexpr char kNotPermitted[] = "Paging server not permitted";

/// Fills one field of a fixed-width record from a slot.
template <typename Record>
struct FixedText {
    Slot slot;
    void (*fill)(Record& record, std::string_view text);
    std::size_t width;  ///< bytes that the field keeps
};

template <typename Record, std::size_t N>
Record RecordOf(char (Record::*)[N]);
template <typename Record, std::size_t N>
constexpr std::size_t WidthOfField(char (Record::*)[N]) {
    return N - 1;
}

template <auto Field>
void Fill(decltype(RecordOf(Field))& record, std::string_view text) {
    CopyText(record.*Field, text);
}

template <auto Field>
constexpr auto Fixed(Slot slot) {
    return FixedText<decltype(RecordOf(Field))>{slot, Fill<Field>, WidthOfField(Field)};
}

constexpr FixedText<AdminInfo> kAdminTexts[] = {
    Fixed<&AdminInfo::name>(Slot::AdminName),
    Fixed<&AdminInfo::password>(Slot::AdminPassword),
};
constexpr FixedText<DepartmentInfo> kDepartmentTexts[] = {
    Fixed<&DepartmentInfo::name>(Slot::Department),
    Fixed<&DepartmentInfo::description>(Slot::Description),
};
constexpr FixedText<UserInfo> kUserTexts[] = {
    Fixed<&UserInfo::userName>(Slot::UserName),
    Fixed<&UserInfo::newUserName>(Slot::NewUserName),
    Fixed<&UserInfo::password>(Slot::Password),
    Fixed<&UserInfo::description>(Slot::UserDescription),
    Fixed<&UserInfo::userGroup>(Slot::UserGroup),
    Fixed<&UserInfo::ip>(Slot::UserIp),
    Fixed<&UserInfo::email>(Slot::UserEmail),
    Fixed<&UserInfo::accessCode>(Slot::AccessCode),
    Fixed<&UserInfo::timeZone>(Slot::UserTimeZone),
    Fixed<&UserInfo::linkUserName>(Slot::LinkUserName),
    Fixed<&UserInfo::linkPassword>(Slot::LinkPassword),
    Fixed<&UserInfo::dbHost>(Slot::DbHost),
    Fixed<&UserInfo::ntUserName>(Slot::NtUserName),
    Fixed<&UserInfo::ntPassword>(Slot::NtPassword),
    Fixed<&UserInfo::ntDomain>(Slot::NtDomain),
    Fixed<&UserInfo::authentication>(Slot::Authentication),
};
constexpr FixedText<UserGroupInfo> kUserGroupTexts[] = {
    Fixed<&UserGroupInfo::name>(Slot::UserGroupName),
    Fixed<&UserGroupInfo::description>(Slot::UserGroupDescription),
    Fixed<&UserGroupInfo::departmentName>(Slot::DepartmentOfUserGroup),
    Fixed<&UserGroupInfo::permissionSet>(Slot::PermissionSet),
};

template <typename Record, std::size_t N>
Record FilledFrom(const RequestRecord& request, const FixedText<Record> (&texts)[N]) {
    Record record{};
    for (const auto& text : texts) text.fill(record, request[text.slot]);
    return record;
}

template <typename Record, std::size_t N>
std::optional<std::size_t> WidthIn(const FixedText<Record> (&texts)[N], Slot slot) {
    for (const auto& text : texts) {
        if (text.slot == slot) return text.width;
    }
    return std::nullopt;
}

/// A quick message goes to its carrier; an empty carrier leaves the recipient that is there.
std::string_view RecipientOf(const RequestRecord& record, int commandCode) {
    const bool usesCarrier =
        commandCode == kQuickSend && (!record.Has(Slot::Carrier) || !record[Slot::Carrier].empty());
    return record[usesCarrier ? Slot::Carrier : Slot::Recipient];
}

int CommandCodeFor(const RequestRecord& record) {
    if (!record.Has(Slot::MessagingAction)) return kNoCommandCode;  // the request ended before its method did
    return MessageCommandOf(record[Slot::MessagingAction]).code;
}

/// Stores a flag as a text: `text` when it is true, else nothing.
void SetFlag(MessagingParameters& parameters, const RequestRecord& record, Slot slot, const char* text) {
    parameters.At(slot) = nullptr;
    if (IsTrue(record, slot)) parameters.Set(slot, text);
}

TextTriple& SlotAt(ExtraSlots& slots, std::size_t index) {
    if (slots.size() <= index) slots.resize(index + 1);
    return slots[index];
}

/// Response actions are kept as (action, response, final) up to the first without a response.
void FillResponseActions(ExtraSlots& slots, const RequestItems& actions) {
    const std::size_t count = std::min(actions.count, kResponseActionSlots);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& [response, action, final] = actions.items[i];
        if (TextOf(response).empty()) return;
        SlotAt(slots, kCustomFieldSlots + i) = {action, response, final};
    }
}

/// Custom fields are kept up to the first without a name. Kept for compatibility: from the fifth on they
/// overwrite response actions.
void FillCustomFields(ExtraSlots& slots, const RequestItems& fields) {
    const std::size_t count = std::min(fields.count, kExtraSlots);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& [name, value, nothing] = fields.items[i];
        if (TextOf(name).empty()) return;
        SlotAt(slots, i) = {name, value, nullptr};
    }
}

/// Writes the error entry, with what only the operator is told, and the fault of a request that is not posted.
void Refuse(const char* reason, DeliveryJournal& journal, const std::string& detail = {}) {
    const std::string entry = detail.empty() ? reason : std::string(reason) + ": " + detail;
    CVsysEventLogInterface::GetInstance(__LINE__, kRequestSource)->Error(nullptr, "%s\n", entry.c_str());
    WriteFault(kRefused, reason);
    journal.Refused(std::string(kRefused) + " " + reason);
}

void Post(RunMode mode, DeliveryJournal& journal) {
    journal.Sending();
    soapProcess.Run(mode);
    if (soapProcess.LastPost()) journal.Posted(*soapProcess.LastPost(), soapProcess.LastOutput());
}

/// Why an address is not permitted. One of white space alone names no server: nothing can be posted there.
std::string RefusalOfAddress(std::string_view url) {
    return url.find_first_not_of(" \t\r\n") == url.npos ? "" : SiteServers().Refusal(url);
}

/// True when the operator permits both addresses; refuses the request otherwise.
bool ArePermitted(const StartArguments& addresses, DeliveryJournal& journal) {
    std::string refusal = RefusalOfAddress(TextOf(addresses.url));
    if (refusal.empty()) refusal = RefusalOfAddress(TextOf(addresses.url2));
    if (refusal.empty()) return true;
    Refuse(kNotPermitted, journal, refusal);
    return false;
}

void FillAdministrationRecords(const RequestRecord& record) {
    g_tAdminInfo = TranslateAdmin(record);
    g_tDept = TranslateDepartment(record);
    g_tUser = TranslateUser(record);
    g_tUserGroup = TranslateUserGroup(record);
    gParameters = TranslateAdministration(record);
}

/// Keeps the addresses for the run. Why they cannot be posted to, as the text of a fault; null when they can.
const char* TakeAddresses(const SlotTexts& texts) {
    gArguments.url = texts.At(Slot::Url);
    gArguments.url2 = texts.At(Slot::Url2);
    return HoldsPrintable(TextOf(gArguments.url)) ? nullptr : "Missing URL";
}

void RunAdministration(DeliveryJournal& journal) {
    if (const char* reason = TakeAddresses(gParameters); reason != nullptr) {
        Refuse(reason, journal);
    } else if (ArePermitted(gArguments, journal)) {
        soapProcess.SetEventLog(CVsysEventLogInterface::GetInstance(__LINE__, kRequestSource));
        Post(RunMode::Administration, journal);
    }
    gParameters = {};
}

void RunMessaging(const RequestRecord& record, DeliveryJournal& journal) {
    gMsgParameters = TranslateMessaging(record);
    const char* reason = TakeAddresses(gMsgParameters);
    if (reason == nullptr) reason = RefusalOf(gMsgParameters);
    if (reason != nullptr) {
        Refuse(reason, journal);
    } else if (ArePermitted(gArguments, journal)) {
        Post(RunMode::Messaging, journal);
    }
}

}  // namespace

bool IsTrue(const RequestRecord& record, Slot slot) {
    const std::string_view text = record[slot];
    return record.Has(slot) && !EqualNoCase(text.substr(0, 4), "fals") && !text.starts_with('0');
}

std::optional<std::size_t> WidthOf(const Method& method, Slot slot) {
    if (const auto width = WidthIn(kUserTexts, slot)) return width;
    if (const auto width = WidthIn(kUserGroupTexts, slot)) return width;
    if (!IsMessagingMethod(method.name)) {
        if (const auto width = WidthIn(kAdminTexts, slot)) return width;
    }
    const bool isOfDepartments = method.commandWord.ends_with("dept");
    return isOfDepartments ? WidthIn(kDepartmentTexts, slot) : std::nullopt;
}

AdminInfo TranslateAdmin(const RequestRecord& record) {
    return FilledFrom(record, kAdminTexts);
}

DepartmentInfo TranslateDepartment(const RequestRecord& record) {
    return FilledFrom(record, kDepartmentTexts);
}

UserInfo TranslateUser(const RequestRecord& record) {
    UserInfo user = FilledFrom(record, kUserTexts);
    user.gui = IsTrue(record, Slot::Gui);
    user.cli = IsTrue(record, Slot::Cli);
    user.resultToEmail = IsTrue(record, Slot::ResultToEmail);
    return user;
}

UserGroupInfo TranslateUserGroup(const RequestRecord& record) {
    UserGroupInfo group = FilledFrom(record, kUserGroupTexts);
    for (int slot = static_cast<int>(Slot::FirstPermission); slot <= static_cast<int>(Slot::LastPermission);
         ++slot) {
        if (!IsTrue(record, static_cast<Slot>(slot))) continue;
        CopyText(group.permissions[group.permissionCount++].slot, std::to_string(slot));
    }
    return group;
}

AdministrationParameters TranslateAdministration(const RequestRecord& record) {
    AdministrationParameters parameters;
    static_cast<SlotTexts&>(parameters) = record;
    parameters.memberNames.emplace_back(record[Slot::MemberName]);
    parameters.enableOwnerSettings = IsTrue(record, Slot::EnableOwnerSettings);
    parameters.alertOwner = IsTrue(record, Slot::AlertOwner);
    parameters.limitAccess = IsTrue(record, Slot::LimitAccess);
    return parameters;
}

MessagingParameters TranslateMessaging(const RequestRecord& record) {
    MessagingParameters parameters;
    static_cast<SlotTexts&>(parameters) = record;
    parameters.commandCode = CommandCodeFor(record);
    parameters.recipients.emplace_back(RecipientOf(record, parameters.commandCode));
    SetFlag(parameters, record, Slot::TimeStamp, "true");
    SetFlag(parameters, record, Slot::ForwardReply, "yes");
    FillResponseActions(parameters.extras, record.responseActions);
    FillCustomFields(parameters.extras, record.customFields);
    return parameters;
}

int TranslateRequest(const RequestRecord& record, DeliveryJournal& journal) {
    FillAdministrationRecords(record);
    const AdministrationRequest request = {&gParameters, &g_tAdminInfo, &g_tDept,
                                           &g_tUser,     &g_tUserGroup, &g_tSchd};
    if (const char* reason = RefusalOf(request, g_szCommand); reason != nullptr) {
        Refuse(reason, journal);
        return 0;
    }
    if (IsMessagingMethod(g_szCommand)) {
        RunMessaging(record, journal);
    } else {
        RunAdministration(journal);
    }
    return 1;
}

}  // namespace quorbel
