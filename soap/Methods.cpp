#include "soap/Methods.h"

#include <algorithm>
#include <array>

#include "util/StringRoutines.h"

// The published interface: the elements of each method, then the methods. Element names stand here as they
// were published, typing errors included.

namespace quorbel {

namespace {

constexpr Required kAlways = Required::Always;

constexpr Slot Permission(int number) {
    return static_cast<Slot>(number);
}

constexpr Field kCommon[] = {
    {.element = "szURL", .slot = Slot::Url, .required = kAlways},
    // Kept for compatibility: the end of szURL2 stops the capture of szURL, not its own.
    {.element = "szURL2", .slot = Slot::Url2, .onEnd = OnEnd::StopUrlCapture},
    {.element = "szAdminName", .slot = Slot::AdminName, .required = Required::ForAdministration},
    {.element = "szAdminPassword", .slot = Slot::AdminPassword, .required = Required::ForAdministration},
};

constexpr Field kAddReceiverToGroup[] = {
    {.element = "szReceiverName", .slot = Slot::MemberName, .required = kAlways},
    {.element = "szGroupName", .slot = Slot::ObjectName, .required = kAlways},
    {.element = "nDelay", .slot = Slot::Delay},
};

constexpr Field kDeleteReceiverFromGroup[] = {
    {.element = "szReceiverName", .slot = Slot::MemberName, .required = kAlways},
    {.element = "szGroupName", .slot = Slot::ObjectName, .required = kAlways},
};

constexpr Field kAddGroupToGroup[] = {
    {.element = "szMasterGroupName", .slot = Slot::ObjectName, .required = kAlways},
    {.element = "szGroupName", .slot = Slot::MemberName, .required = kAlways},
    {.element = "nDelay", .slot = Slot::Delay},
};

constexpr Field kDeleteGroupFromGroup[] = {
    {.element = "szMasterGroupName", .slot = Slot::ObjectName, .required = kAlways},
    {.element = "szGroupName", .slot = Slot::MemberName, .required = kAlways},
};

constexpr Field kAddGroup[] = {
    {.element = "szGroupName", .slot = Slot::ObjectName},
    {.element = "szDescription", .slot = Slot::Description},
    {.element = "szGroupType", .slot = Slot::GroupType},
    {.element = "szDepartment", .slot = Slot::Department},
    {.element = "bEnableOwnerSettings", .slot = Slot::EnableOwnerSettings},
    {.element = "szUser", .slot = Slot::User},
    {.element = "bAlertOwner", .slot = Slot::AlertOwner},
    {.element = "bLimitAcess", .slot = Slot::LimitAccess},
};

constexpr Field kGroupName[] = {{.element = "szGroupName", .slot = Slot::ObjectName}};

constexpr Field kAddReceiver[] = {
    {.element = "szVoiceNumber", .slot = Slot::VoiceNumber},
    {.element = "szReceiverName", .slot = Slot::Recipient},
    {.element = "szDescription", .slot = Slot::Description},
    {.element = "szDepartment", .slot = Slot::Department},
    {.element = "szType", .slot = Slot::ReceiverType},
    {.element = "szPIN", .slot = Slot::Pin},
    {.element = "szCarrier", .slot = Slot::Carrier},
    {.element = "szBackupPIN", .slot = Slot::BackupPin},
    {.element = "szBackupCarrier", .slot = Slot::BackupCarrier},
    {.element = "bVoiceEnable", .slot = Slot::VoiceEnable},
    {.element = "nTimeZone", .slot = Slot::ReceiverTimeZone},
    {.element = "bKeepAlphaForNumType", .slot = Slot::KeepAlpha},
    {.element = "szEmail", .slot = Slot::ReceiverEmail},
    {.element = "bEmailFaileover", .slot = Slot::EmailFailover},
    {.element = "bEmailCC", .slot = Slot::EmailCc},
    {.element = "szFirstName", .slot = Slot::FirstName},
    {.element = "szLastName", .slot = Slot::LastName},
    {.element = "szSecurityCode", .slot = Slot::SecurityCode},
    {.element = "szAcctName", .slot = Slot::AccountName},
    {.element = "szAcctPwd", .slot = Slot::AccountPassword},
    {.element = "bCanUpdRece", .slot = Slot::CanUpdateReceiver},
    {.element = "bCanUpdSchd", .slot = Slot::CanUpdateSchedule},
    {.element = "szDeviceStatus", .slot = Slot::DeviceStatus},
    {.element = "szForwardTo", .slot = Slot::ForwardTo},
};

constexpr Field kReceiverName[] = {{.element = "szReceiverName", .slot = Slot::Recipient}};

constexpr Field kAddDepartment[] = {
    {.element = "szDepartmentName", .slot = Slot::Department, .required = kAlways},
    {.element = "szDescription", .slot = Slot::Description},
};

constexpr Field kDepartmentName[] = {
    {.element = "szDepartmentName", .slot = Slot::Department, .required = kAlways}};

constexpr Field kAddOrModifyUser[] = {
    {.element = "szUserName", .slot = Slot::UserName, .required = kAlways},
    {.element = "szPassword", .slot = Slot::Password},
    {.element = "szDescription", .slot = Slot::UserDescription},
    {.element = "szUserGroup", .slot = Slot::UserGroup},
    {.element = "szAccesCode", .slot = Slot::AccessCode},
    {.element = "szEmail", .slot = Slot::UserEmail},
    {.element = "bCLI", .slot = Slot::Cli},
    {.element = "bGUI", .slot = Slot::Gui},
    {.element = "bResultToEmail", .slot = Slot::ResultToEmail},
    {.element = "szUserIP", .slot = Slot::UserIp},
    {.element = "nTimeZone", .slot = Slot::UserTimeZone},
    {.element = "szLinkPassword", .slot = Slot::LinkPassword},
    {.element = "szLinkUserName", .slot = Slot::LinkUserName},
    {.element = "szAppHost", .slot = Slot::AppHost},
    {.element = "szDbHost", .slot = Slot::DbHost},
    {.element = "szAuthen", .slot = Slot::Authentication},
    {.element = "szNTDomain", .slot = Slot::NtDomain},
    {.element = "szNTPassword", .slot = Slot::NtPassword},
    {.element = "szNTUserName", .slot = Slot::NtUserName},
    {.element = "szNewUserName", .slot = Slot::NewUserName},
};

constexpr Field kUserName[] = {{.element = "szUserName", .slot = Slot::UserName, .required = kAlways}};

// Kept for compatibility: the end tags of the five licence fields start their capture, so each of them takes
// all that follows in the method, white space included, and white space counts as true.
constexpr Field kAddUserGroup[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName, .required = kAlways},
    {.element = "szDescription", .slot = Slot::UserGroupDescription},
    {.element = "bLog", .slot = Permission(62)},
    {.element = "bDirectory", .slot = Permission(67)},
    {.element = "bLicense", .slot = Permission(70)},
    {.element = "bMessenger", .slot = Permission(68)},
    {.element = "bGroupReport", .slot = Permission(80)},
    {.element = "bGroupUser", .slot = Permission(81)},
    {.element = "bQueue", .slot = Permission(66)},
    {.element = "bCarrier", .slot = Permission(63)},
    {.element = "bMonitor", .slot = Permission(69)},
    {.element = "bEmailGateway", .slot = Permission(71)},
    {.element = "bAction", .slot = Permission(72)},
    {.element = "bTemplate", .slot = Permission(64)},
    {.element = "bUseTemplate", .slot = Permission(65)},
    {.element = "bService", .slot = Permission(87)},
    {.element = "bStdSend", .slot = Permission(73)},
    {.element = "bTwoWaySend", .slot = Permission(74)},
    {.element = "bEscelationSend", .slot = Permission(79)},
    {.element = "bScheduleSend", .slot = Permission(78)},
    {.element = "bFaxSend", .slot = Permission(76)},
    {.element = "bVoiceSend", .slot = Permission(77)},
    {.element = "bQuickSend", .slot = Permission(75)},
    {.element = "bSendreceWithoutDeptLicense", .slot = Permission(88), .onEnd = OnEnd::KeepCapturing},
    {.element = "bSendgrpWithoutDeptLicense", .slot = Permission(89), .onEnd = OnEnd::KeepCapturing},
    {.element = "bRreceiverWithoutDeptLicense", .slot = Permission(90), .onEnd = OnEnd::KeepCapturing},
    {.element = "bAddgroupWithoutDeptLicense", .slot = Permission(91), .onEnd = OnEnd::KeepCapturing},
    {.element = "bModgroupWithoutDeptLicense", .slot = Permission(92), .onEnd = OnEnd::KeepCapturing},
    {.element = "bEnableConfidMode", .slot = Permission(97)},
};

constexpr Field kUserGroupName[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName, .required = kAlways}};

// Kept for compatibility: bAddAndDeleteGroup ends with a method's name, so its end tag closes the method and
// what follows it is lost.
constexpr Field kDepartmentPermission[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName, .required = kAlways},
    {.element = "szDeptName", .slot = Slot::DepartmentOfUserGroup, .required = kAlways},
    {.element = "bSendReceiver", .slot = Permission(88)},
    {.element = "bSendGroup", .slot = Permission(89)},
    {.element = "bManageReceiver", .slot = Permission(90)},
    {.element = "bViewReceiver", .slot = Permission(93)},
    {.element = "bAddAndDeleteGroup", .slot = Permission(91)},
    {.element = "bModifyGroup", .slot = Permission(92)},
    {.element = "bViewGroup", .slot = Permission(94)},
};

constexpr Field kPermissionSet[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName, .required = kAlways},
    {.element = "szUpgName", .slot = Slot::PermissionSet, .required = kAlways},
    {.element = "bViewReport", .slot = Permission(96)},
    {.element = "bManageUser", .slot = Permission(95)},
};

constexpr Field kStandardMessage[] = {
    {.element = "szRecipientName", .slot = Slot::Recipient, .required = kAlways},
    {.element = "szJobID", .slot = Slot::JobId},
    {.element = "nPriority", .slot = Slot::Priority},
    {.element = "bTimeStamp", .slot = Slot::TimeStamp},
    {.element = "ResponseActionData", .kind = FieldKind::ResponseAction},
    {.element = "szResponse", .kind = FieldKind::ResponseActionPart, .part = 0, .required = kAlways},
    {.element = "szAction", .kind = FieldKind::ResponseActionPart, .part = 1},
    {.element = "bFinal", .kind = FieldKind::ResponseActionPart, .part = 2},
    {.element = "CustomFieldData", .kind = FieldKind::CustomField},
    {.element = "szFieldName", .kind = FieldKind::CustomFieldPart, .part = 0, .required = kAlways},
    {.element = "szFieldValue", .kind = FieldKind::CustomFieldPart, .part = 1},
    {.element = "szMessage", .slot = Slot::Message, .onData = OnData::Append},
    {.element = "szSender", .slot = Slot::Sender},
    {.element = "bForwardReply", .slot = Slot::ForwardReply},
    {.element = "szSubject", .slot = Slot::Subject},
};

constexpr Field kQuickMessage[] = {
    {.element = "szCarrierName", .slot = Slot::Carrier},
    {.element = "szPIN", .slot = Slot::Pin},
    {.element = "szJobID", .slot = Slot::JobId},
    {.element = "nPriority", .slot = Slot::Priority},
    {.element = "bTimeStamp", .slot = Slot::TimeStamp},
    {.element = "szMessage", .slot = Slot::Message, .onData = OnData::Append},
    {.element = "szAltCarrierName", .slot = Slot::BackupCarrier},
    {.element = "szAltPIN", .slot = Slot::BackupPin},
    {.element = "szSender", .slot = Slot::Sender},
    {.element = "szSubject", .slot = Slot::Subject},
};

constexpr Field kJobId[] = {{.element = "szJobID", .slot = Slot::JobId}};

constexpr EndRecords kMember = EndRecords::MemberKind;
constexpr EndRecords kAction = EndRecords::MessagingAction;

// Kept for compatibility: the last three codes do not follow the order of the rows, and the order decides a
// name that ends with two methods' names.
constexpr Method kMethods[] = {
    {"AddReceiver2Group", 128, "addrecvtogrp", kAddReceiverToGroup, "receiver", kMember},
    {"DeleteReceiverFromGroup", 129, "delrecvfromgrp", kDeleteReceiverFromGroup, "receiver", kMember},
    {"AddGroup2Group", 130, "addgrptogrp", kAddGroupToGroup, "group", kMember},
    {"DeleteGroupFromGroup", 131, "delgrpfromgrp", kDeleteGroupFromGroup, "group", kMember},
    {"AddGroup", 132, "addgroup", kAddGroup},
    {"QueryGroup", 133, "querygroup", kGroupName},
    {"DeleteGroup", 134, "delgroup", kGroupName},
    {"AddReceiver", 135, "addreceiver", kAddReceiver},
    {"DeleteReceiver", 136, "delreceiver", kReceiverName},
    {"QueryReceiver", 137, "queryreceiver", kReceiverName},
    {"AddDepartment", 138, "adddept", kAddDepartment},
    {"DeleteDepartment", 139, "deldept", kDepartmentName},
    {"QueryDepartment", 140, "querydept", kDepartmentName},
    {"AddUser", 141, "adduser", kAddOrModifyUser},
    {"ModifyUser", 142, "moduser", kAddOrModifyUser, {}, {}, 141},
    {"DeleteUser", 143, "deluser", kUserName},
    {"QueryUser", 144, "queryuser", kUserName},
    {"AddUserGroup", 145, "addusergroup", kAddUserGroup},
    {"DeleteUserGroup", 146, "delusergroup", kUserGroupName},
    {"QueryUserGroup", 147, "queryusergroup", kUserGroupName},
    {"SetUserGroupDeptPermission", 148, "setusergroupdept", kDepartmentPermission},
    {"SetUserGroupUgp", 149, "setusergroupugp", kPermissionSet},
    {"SendStdMessage", 150, "single", kStandardMessage, "send", kAction},
    {"SendQuickMessage", 151, "quick", kQuickMessage, "quick", kAction},
    {"QueryMessage", 152, "query", kJobId, "query", kAction},
    {"QueryGroupMessage", 155, "query", kJobId, "querygroupmsg", kAction, 152},
    {"QueryMessageHistory", 154, "query", kJobId, "queryjobhistory", kAction, 152},
    {"ConfirmMessage", 153, "confirm", kJobId, "confirm", kAction},
};
static_assert(std::size(kMethods) == kMethodCount, "one row for each code");

/// The codes in the order in which an end tag is tested.
constexpr int kEndCodes[] = {128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140, 141,
                             143, 144, 142, 145, 146, 147, 148, 149, 150, 151, 152, 154, 155, 153};

constexpr const Method* ByCode(int code) {
    return std::find_if(std::begin(kMethods), std::end(kMethods),
                        [code](const Method& method) { return method.code == code; });
}

constexpr bool EveryCodeOnce() {
    for (int code = kFirstMethodCode; code <= kLastMethodCode; ++code) {
        if (ByCode(code) == std::end(kMethods)) return false;
        if (std::count(std::begin(kEndCodes), std::end(kEndCodes), code) != 1) return false;
    }
    return true;
}
static_assert(EveryCodeOnce(), "both orders hold every code exactly once");

constexpr bool FillsSlotTwice(const Method& method) {
    std::array<int, kSlotCount + 1> filledBy{};
    for (const std::span<const Field> fields : {std::span<const Field>(kCommon), method.fields}) {
        for (const Field& field : fields) {
            if (field.kind == FieldKind::Text && ++filledBy[static_cast<std::size_t>(field.slot)] > 1)
                return true;
        }
    }
    return false;
}

constexpr bool FieldsFit(const Method& method) {
    const auto kept = std::count_if(method.fields.begin(), method.fields.end(),
                                    [](const Field& field) { return field.onData == OnData::Append; });
    const bool shares = method.flagsOf == 0 || ByCode(method.flagsOf)->fields.data() == method.fields.data();
    return method.fields.size() <= kMaxFields && kept <= 1 && shares && !FillsSlotTwice(method);
}
static_assert(
    std::all_of(std::begin(kMethods), std::end(kMethods), FieldsFit),
    "one element for each slot, one that is kept whole, and the same fields where flags are shared");

constexpr std::array<const Method*, kMethodCount> InEndOrder() {
    std::array<const Method*, kMethodCount> order{};
    for (std::size_t i = 0; i < kMethodCount; ++i) order[i] = ByCode(kEndCodes[i]);
    return order;
}
constexpr auto kEndOrder = InEndOrder();

}  // namespace

std::span<const Field> CommonFields() {
    return kCommon;
}

std::span<const Method> Methods() {
    return kMethods;
}

bool TagName::IsEnd(std::string_view name) const {
    return EndsWithNoCase(name_, name);
}

const Method* MethodOpenedBy(const TagName& element) {
    const auto* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                      [&](const Method& row) { return element.EndsWith(row.name); });
    return method == std::end(kMethods) ? nullptr : method;
}

const Method* MethodClosedBy(const TagName& element) {
    const auto* match = std::find_if(kEndOrder.begin(), kEndOrder.end(),
                                     [&](const Method* row) { return element.EndsWith(row->name); });
    return match == kEndOrder.end() ? nullptr : *match;
}

bool IsRequired(const Method& method, const Field& field) {
    if (field.required == Required::ForAdministration) return !IsMessagingMethod(method.name);
    return field.required == Required::Always;
}

bool IsMessagingMethod(std::string_view name) {
    return std::any_of(std::begin(kMethods), std::end(kMethods), [name](const Method& method) {
        return method.endRecords == EndRecords::MessagingAction && method.name == name;
    });
}

}  // namespace quorbel
