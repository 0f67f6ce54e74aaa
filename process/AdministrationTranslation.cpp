#include "process/AdministrationTranslation.h"

#include "process/RequestValues.h"
#include "soap/MethodTable.h"
#include "util/BoundedText.h"

namespace quorbel {

namespace {

/// The name of the element that grants the permission of `slot`. Five slots have one name in AddUserGroup and
/// another elsewhere.
std::string_view PermissionElement(Slot slot, int methodCode) {
    const Method* method = MethodOfCode(methodCode);
    const bool addsGroup = method != nullptr && method->handler == FieldHandler::AddUserGroup;
    const FieldHandler own = addsGroup ? FieldHandler::AddUserGroup : FieldHandler::DepartmentPermission;
    const FieldHandler other = addsGroup ? FieldHandler::DepartmentPermission : FieldHandler::AddUserGroup;
    for (const FieldHandler handler : {own, FieldHandler::PermissionSet, other}) {
        for (const FieldRule& rule : FieldsOf(handler)) {
            if (rule.kind == FieldKind::Text && rule.slot == slot) return rule.element;
        }
    }
    return {};
}

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
    for (int number = static_cast<int>(Slot::FirstPermission);
         number <= static_cast<int>(Slot::LastPermission); ++number) {
        const auto slot = static_cast<Slot>(number);
        if (!IsTrue(record, slot)) continue;
        CopyText(group.permissions[group.permissionCount++].name, PermissionElement(slot, methodCode));
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

}  // namespace quorbel
