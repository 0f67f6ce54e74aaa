#include "tools/wsdl/RequestElements.h"

#include <algorithm>

#include "process/TranslationRecords.h"

namespace quorbel {

namespace {

/// Where an element stands in its request.
enum class Place { Head, Own, Sticky, ClosesMethod, SecondUrl };

Place PlaceOf(const FieldRule& rule, FieldHandler handler) {
    if (handler == FieldHandler::Common) return rule.slot == Slot::Url2 ? Place::SecondUrl : Place::Head;
    if (IsSticky(rule)) return Place::Sticky;
    // Its end tag ends the method for the parser, whatever element the name belongs to.
    if (MethodClosedBy(rule.element) != nullptr) return Place::ClosesMethod;
    return Place::Own;
}

bool IsMember(const FieldRule& rule) {
    return rule.kind == FieldKind::ResponseActionPart || rule.kind == FieldKind::CustomFieldPart;
}

struct Placed {
    Place place;
    FieldRule rule;
};

void Append(std::vector<Placed>& elements, FieldHandler handler) {
    for (const FieldRule& rule : FieldsOf(handler)) {
        if (!IsMember(rule)) elements.push_back({PlaceOf(rule, handler), rule});
    }
}

struct Requirement {
    FieldHandler handler;
    std::string_view element;
};
using H = FieldHandler;

constexpr Requirement kRequirements[] = {
    {H::AddReceiverToGroup, "szReceiverName"},
    {H::AddReceiverToGroup, "szGroupName"},
    {H::DeleteReceiverFromGroup, "szReceiverName"},
    {H::DeleteReceiverFromGroup, "szGroupName"},
    {H::AddGroupToGroup, "szMasterGroupName"},
    {H::AddGroupToGroup, "szGroupName"},
    {H::DeleteGroupFromGroup, "szMasterGroupName"},
    {H::DeleteGroupFromGroup, "szGroupName"},
    {H::AddDepartment, "szDepartmentName"},
    {H::DeleteDepartment, "szDepartmentName"},
    {H::QueryDepartment, "szDepartmentName"},
    {H::AddOrModifyUser, "szUserName"},
    {H::DeleteUser, "szUserName"},
    {H::QueryUser, "szUserName"},
    {H::AddUserGroup, "szUserGroupName"},
    {H::DeleteUserGroup, "szUserGroupName"},
    {H::QueryUserGroup, "szUserGroupName"},
    {H::DepartmentPermission, "szUserGroupName"},
    {H::DepartmentPermission, "szDeptName"},
    {H::PermissionSet, "szUserGroupName"},
    {H::PermissionSet, "szUpgName"},
    {H::StandardMessage, "szRecipientName"},
    {H::StandardMessage, "szResponse"},   // the first item without it ends the list
    {H::StandardMessage, "szFieldName"},  // the same
};

bool IsCredential(const FieldRule& rule) {
    return rule.element == "szAdminName" || rule.element == "szAdminPassword";
}

}  // namespace

std::vector<FieldRule> RequestElementsOf(const Method& method) {
    std::vector<Placed> elements;
    Append(elements, FieldHandler::Common);
    Append(elements, method.handler);
    std::stable_sort(elements.begin(), elements.end(),
                     [](const Placed& left, const Placed& right) { return left.place < right.place; });

    const bool endsSticky = std::any_of(elements.begin(), elements.end(),
                                        [](const Placed& e) { return e.place == Place::Sticky; });
    std::vector<FieldRule> rules;
    for (const Placed& e : elements) {
        // Behind a sticky element szURL2 would go into that one, too.
        if (e.place != Place::SecondUrl || !endsSticky) rules.push_back(e.rule);
    }
    return rules;
}

std::vector<FieldRule> MembersOf(const FieldRule& item, std::span<const FieldRule> fields) {
    const FieldKind part =
        item.kind == FieldKind::ResponseAction ? FieldKind::ResponseActionPart : FieldKind::CustomFieldPart;
    std::vector<FieldRule> members;
    std::copy_if(fields.begin(), fields.end(), std::back_inserter(members),
                 [part](const FieldRule& rule) { return rule.kind == part; });
    return members;
}

bool IsItem(const FieldRule& rule) {
    return rule.kind == FieldKind::ResponseAction || rule.kind == FieldKind::CustomField;
}

bool IsSticky(const FieldRule& rule) {
    return rule.onEnd == OnEnd::KeepCapturing;
}

bool IsRequired(const Method& method, const FieldRule& rule) {
    if (rule.element == "szURL") return true;
    if (IsCredential(rule)) return !IsMessagingMethod(method.name);
    return std::any_of(std::begin(kRequirements), std::end(kRequirements), [&](const Requirement& row) {
        return row.handler == method.handler && row.element == rule.element;
    });
}

std::size_t MaxOccurs(const FieldRule& rule) {
    if (rule.kind == FieldKind::ResponseAction) return kResponseActionSlots;
    if (rule.kind == FieldKind::CustomField) return kCustomFieldSlots;
    return 1;
}

std::string_view TypeOf(const FieldRule& rule) {
    if (rule.element.starts_with('b')) return "xs:boolean";
    // Time zones are the paging server's own identifiers, whatever the name says.
    if (rule.element.starts_with('n') && rule.element != "nTimeZone") return "xs:int";
    return "xs:string";
}

}  // namespace quorbel
