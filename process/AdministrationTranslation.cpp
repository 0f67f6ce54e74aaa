#include "AdministrationTranslation.h"

#include "BoundedText.h"
#include "MethodTable.h"
#include "RequestValues.h"

namespace {

constexpr int kAddUserGroupCode = 145;

/// The boolean element that grants a permission. Five have another name in AddUserGroup than in the other
/// methods.
struct Permission {
    int slot;
    const char* element;
    const char* addUserGroupElement = nullptr;
};
constexpr Permission kPermissions[] = {
    {62, "bLog"},
    {63, "bCarrier"},
    {64, "bTemplate"},
    {65, "bUseTemplate"},
    {66, "bQueue"},
    {67, "bDirectory"},
    {68, "bMessenger"},
    {69, "bMonitor"},
    {70, "bLicense"},
    {71, "bEmailGateway"},
    {72, "bAction"},
    {73, "bStdSend"},
    {74, "bTwoWaySend"},
    {75, "bQuickSend"},
    {76, "bFaxSend"},
    {77, "bVoiceSend"},
    {78, "bScheduleSend"},
    {79, "bEscelationSend"},
    {80, "bGroupReport"},
    {81, "bGroupUser"},
    {87, "bService"},
    {88, "bSendReceiver", "bSendreceWithoutDeptLicense"},
    {89, "bSendGroup", "bSendgrpWithoutDeptLicense"},
    {90, "bManageReceiver", "bRreceiverWithoutDeptLicense"},
    {91, "bAddAndDeleteGroup", "bAddgroupWithoutDeptLicense"},
    {92, "bModifyGroup", "bModgroupWithoutDeptLicense"},
    {93, "bViewReceiver"},
    {94, "bViewGroup"},
    {95, "bManageUser"},
    {96, "bViewReport"},
    {97, "bEnableConfidMode"},
};
static_assert(std::size(kPermissions) <= std::size(UserGroupInfo{}.permissions), "room for every permission");

struct ParameterText {
    Slot slot;
    std::string AdministrationParameters::*field;
};
using P = AdministrationParameters;
constexpr ParameterText kParameterTexts[] = {
    {Slot::Url, &P::url},
    {Slot::Url2, &P::url2},
    {Slot::CommandWord, &P::command},
    {Slot::ObjectName, &P::objectName},
    {Slot::MemberKind, &P::memberKind},
    {Slot::GroupType, &P::groupType},
    {Slot::Department, &P::department},
    {Slot::Description, &P::description},
    {Slot::User, &P::user},
    {Slot::Recipient, &P::receiver},
    {Slot::ReceiverType, &P::receiverType},
    {Slot::Pin, &P::pin},
    {Slot::Carrier, &P::carrier},
    {Slot::BackupPin, &P::backupPin},
    {Slot::BackupCarrier, &P::backupCarrier},
    {Slot::VoiceEnable, &P::voiceEnable},
    {Slot::ReceiverTimeZone, &P::receiverTimeZone},
    {Slot::KeepAlpha, &P::keepAlpha},
    {Slot::ReceiverEmail, &P::receiverEmail},
    {Slot::EmailFailover, &P::emailFailover},
    {Slot::EmailCc, &P::emailCc},
    {Slot::VoiceNumber, &P::voiceNumber},
    {Slot::FirstName, &P::firstName},
    {Slot::LastName, &P::lastName},
    {Slot::SecurityCode, &P::securityCode},
    {Slot::AccountName, &P::accountName},
    {Slot::AccountPassword, &P::accountPassword},
    {Slot::CanUpdateReceiver, &P::canUpdateReceiver},
    {Slot::CanUpdateSchedule, &P::canUpdateSchedule},
    {Slot::DeviceStatus, &P::deviceStatus},
    {Slot::ForwardTo, &P::forwardTo},
    {Slot::Delay, &P::delay},
};

}  // namespace

AdminInfo TranslateAdmin(const RequestRecord& record) {
    AdminInfo admin{};
    CopyText(admin.name, record.Text(Slot::AdminName));
    CopyText(admin.password, record.Text(Slot::AdminPassword));
    return admin;
}

DepartmentInfo TranslateDepartment(const RequestRecord& record) {
    DepartmentInfo department{};
    CopyText(department.name, record.Text(Slot::Department));
    CopyText(department.description, record.Text(Slot::Description));
    return department;
}

UserInfo TranslateUser(const RequestRecord& record) {
    UserInfo user{};
    CopyText(user.userName, record.Text(Slot::UserName));
    CopyText(user.newUserName, record.Text(Slot::NewUserName));
    CopyText(user.password, record.Text(Slot::Password));
    CopyText(user.description, record.Text(Slot::UserDescription));
    CopyText(user.userGroup, record.Text(Slot::UserGroup));
    CopyText(user.ip, record.Text(Slot::UserIp));
    CopyText(user.email, record.Text(Slot::UserEmail));
    user.gui = IsTrue(record, Slot::Gui);
    user.cli = IsTrue(record, Slot::Cli);
    user.resultToEmail = IsTrue(record, Slot::ResultToEmail);
    CopyText(user.accessCode, record.Text(Slot::AccessCode));
    CopyText(user.timeZone, record.Text(Slot::UserTimeZone));
    CopyText(user.linkUserName, record.Text(Slot::LinkUserName));
    CopyText(user.linkPassword, record.Text(Slot::LinkPassword));
    CopyText(user.dbHost, record.Text(Slot::DbHost));
    CopyText(user.ntUserName, record.Text(Slot::NtUserName));
    CopyText(user.ntPassword, record.Text(Slot::NtPassword));
    CopyText(user.ntDomain, record.Text(Slot::NtDomain));
    CopyText(user.authentication, record.Text(Slot::Authentication));
    return user;
}

UserGroupInfo TranslateUserGroup(const RequestRecord& record, int methodCode) {
    UserGroupInfo group{};
    CopyText(group.name, record.Text(Slot::UserGroupName));
    CopyText(group.description, record.Text(Slot::UserGroupDescription));
    CopyText(group.departmentName, record.Text(Slot::DepartmentOfUserGroup));
    CopyText(group.permissionSet, record.Text(Slot::PermissionSet));
    for (const Permission& permission : kPermissions) {
        if (!IsTrue(record, static_cast<Slot>(permission.slot))) continue;
        const bool ownName = methodCode == kAddUserGroupCode && permission.addUserGroupElement != nullptr;
        CopyText(group.permissions[group.permissionCount++].name,
                 ownName ? permission.addUserGroupElement : permission.element);
    }
    return group;
}

AdministrationParameters TranslateAdministration(const RequestRecord& record) {
    AdministrationParameters parameters;
    for (const ParameterText& text : kParameterTexts) CopyValue(parameters.*text.field, record, text.slot);
    CopyValue(parameters.memberNames.emplace_back(), record, Slot::MemberName);
    parameters.enableOwnerSettings = IsTrue(record, Slot::EnableOwnerSettings);
    parameters.alertOwner = IsTrue(record, Slot::AlertOwner);
    parameters.limitAccess = IsTrue(record, Slot::LimitAccess);
    return parameters;
}
