#include "soap/FieldRules.h"

namespace quorbel {

namespace {

// The element names are the service's published ones, typing errors included: clients send them as they
// stand.

constexpr FieldRule kCommon[] = {
    {.element = "szURL", .slot = Slot::Url},
    // Clients depend on this: the end of szURL2 stops the capture of szURL, not its own.
    {.element = "szURL2", .slot = Slot::Url2, .onEnd = OnEnd::StopUrlCapture},
    {.element = "szAdminName", .slot = Slot::AdminName},
    {.element = "szAdminPassword", .slot = Slot::AdminPassword},
};

constexpr FieldRule kAddReceiverToGroup[] = {
    {.element = "szReceiverName", .slot = Slot::MemberName},
    {.element = "szGroupName", .slot = Slot::ObjectName},
    {.element = "nDelay", .slot = Slot::Delay},
};

constexpr FieldRule kDeleteReceiverFromGroup[] = {
    {.element = "szReceiverName", .slot = Slot::MemberName},
    {.element = "szGroupName", .slot = Slot::ObjectName},
};

constexpr FieldRule kAddGroupToGroup[] = {
    {.element = "szMasterGroupName", .slot = Slot::ObjectName},
    {.element = "szGroupName", .slot = Slot::MemberName},
    {.element = "nDelay", .slot = Slot::Delay},
};

constexpr FieldRule kDeleteGroupFromGroup[] = {
    {.element = "szMasterGroupName", .slot = Slot::ObjectName},
    {.element = "szGroupName", .slot = Slot::MemberName},
};

constexpr FieldRule kAddGroup[] = {
    {.element = "szGroupName", .slot = Slot::ObjectName},
    {.element = "szDescription", .slot = Slot::Description},
    {.element = "szGroupType", .slot = Slot::GroupType},
    {.element = "szDepartment", .slot = Slot::Department},
    {.element = "bEnableOwnerSettings", .slot = Slot::EnableOwnerSettings},
    {.element = "szUser", .slot = Slot::User},
    {.element = "bAlertOwner", .slot = Slot::AlertOwner},
    {.element = "bLimitAcess", .slot = Slot::LimitAccess},
};

constexpr FieldRule kGroupName[] = {{.element = "szGroupName", .slot = Slot::ObjectName}};

constexpr FieldRule kAddReceiver[] = {
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

constexpr FieldRule kReceiverName[] = {{.element = "szReceiverName", .slot = Slot::Recipient}};

constexpr FieldRule kAddDepartment[] = {
    {.element = "szDepartmentName", .slot = Slot::Department},
    {.element = "szDescription", .slot = Slot::Description},
};

constexpr FieldRule kDepartmentName[] = {{.element = "szDepartmentName", .slot = Slot::Department}};

constexpr FieldRule kAddOrModifyUser[] = {
    {.element = "szUserName", .slot = Slot::UserName},
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

constexpr FieldRule kUserName[] = {{.element = "szUserName", .slot = Slot::UserName}};

constexpr Slot Permission(int number) {
    return static_cast<Slot>(number);
}

// Clients depend on this: the end tags of the five licence fields start their capture, so each of them takes
// all that follows in the method, white space included, and white space counts as true.
constexpr FieldRule kAddUserGroup[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName},
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

constexpr FieldRule kUserGroupName[] = {{.element = "szUserGroupName", .slot = Slot::UserGroupName}};

// bAddAndDeleteGroup ends with a method's name, so its end tag closes the method: what follows it is lost.
constexpr FieldRule kDepartmentPermission[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName},
    {.element = "szDeptName", .slot = Slot::DepartmentOfUserGroup},
    {.element = "bSendReceiver", .slot = Permission(88)},
    {.element = "bSendGroup", .slot = Permission(89)},
    {.element = "bManageReceiver", .slot = Permission(90)},
    {.element = "bViewReceiver", .slot = Permission(93)},
    {.element = "bAddAndDeleteGroup", .slot = Permission(91)},
    {.element = "bModifyGroup", .slot = Permission(92)},
    {.element = "bViewGroup", .slot = Permission(94)},
};

constexpr FieldRule kPermissionSet[] = {
    {.element = "szUserGroupName", .slot = Slot::UserGroupName},
    {.element = "szUpgName", .slot = Slot::PermissionSet},
    {.element = "bViewReport", .slot = Permission(96)},
    {.element = "bManageUser", .slot = Permission(95)},
};

constexpr FieldRule kStandardMessage[] = {
    {.element = "szRecipientName", .slot = Slot::Recipient},
    {.element = "szJobID", .slot = Slot::JobId},
    {.element = "nPriority", .slot = Slot::Priority},
    {.element = "bTimeStamp", .slot = Slot::TimeStamp},
    {.element = "ResponseActionData", .kind = FieldKind::ResponseAction},
    {.element = "szResponse", .kind = FieldKind::ResponseActionPart, .part = 0},
    {.element = "szAction", .kind = FieldKind::ResponseActionPart, .part = 1},
    {.element = "bFinal", .kind = FieldKind::ResponseActionPart, .part = 2},
    {.element = "CustomFieldData", .kind = FieldKind::CustomField},
    {.element = "szFieldName", .kind = FieldKind::CustomFieldPart, .part = 0},
    {.element = "szFieldValue", .kind = FieldKind::CustomFieldPart, .part = 1},
    {.element = "szMessage", .slot = Slot::Message, .onData = OnData::Append},
    {.element = "szSender", .slot = Slot::Sender},
    {.element = "bForwardReply", .slot = Slot::ForwardReply},
    {.element = "szSubject", .slot = Slot::Subject},
};

constexpr FieldRule kQuickMessage[] = {
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

constexpr FieldRule kJobId[] = {{.element = "szJobID", .slot = Slot::JobId}};

struct HandlerFields {
    FieldHandler handler;
    std::span<const FieldRule> fields;
};
using H = FieldHandler;

constexpr HandlerFields kHandlers[] = {
    {H::Common, kCommon},
    {H::AddReceiverToGroup, kAddReceiverToGroup},
    {H::DeleteReceiverFromGroup, kDeleteReceiverFromGroup},
    {H::AddGroupToGroup, kAddGroupToGroup},
    {H::DeleteGroupFromGroup, kDeleteGroupFromGroup},
    {H::AddGroup, kAddGroup},
    {H::QueryGroup, kGroupName},
    {H::DeleteGroup, kGroupName},
    {H::AddReceiver, kAddReceiver},
    {H::DeleteReceiver, kReceiverName},
    {H::QueryReceiver, kReceiverName},
    {H::AddDepartment, kAddDepartment},
    {H::DeleteDepartment, kDepartmentName},
    {H::QueryDepartment, kDepartmentName},
    {H::AddOrModifyUser, kAddOrModifyUser},
    {H::DeleteUser, kUserName},
    {H::QueryUser, kUserName},
    {H::AddUserGroup, kAddUserGroup},
    {H::DeleteUserGroup, kUserGroupName},
    {H::QueryUserGroup, kUserGroupName},
    {H::DepartmentPermission, kDepartmentPermission},
    {H::PermissionSet, kPermissionSet},
    {H::StandardMessage, kStandardMessage},
    {H::QuickMessage, kQuickMessage},
    {H::MessageQuery, kJobId},
    {H::Confirmation, kJobId},
};

constexpr bool RowsAreInOrderAndFit() {
    std::size_t position = 0;
    for (const HandlerFields& row : kHandlers) {
        if (static_cast<std::size_t>(row.handler) != position++) return false;
        if (row.fields.empty() || row.fields.size() > kMaxFields) return false;
    }
    return position == kFieldHandlerCount;
}
static_assert(RowsAreInOrderAndFit(), "one row for each handler, with room for its capture flags");

}  // namespace

std::span<const FieldRule> FieldsOf(FieldHandler handler) {
    return kHandlers[static_cast<std::size_t>(handler)].fields;
}

}  // namespace quorbel
