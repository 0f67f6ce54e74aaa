#include "process/AdministrationDispatch.h"

#include <algorithm>
#include <span>

#include "soap/MethodTable.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using Request = AdministrationRequest;

/// One condition of a command and the text of the fault when it does not hold.
struct Check {
    bool (*holds)(const Request&);
    const char* refusal;
};

bool IsSet(const char* field) {
    return field[0] != '\0';
}

bool HasMember(const Request& r) {
    return !r.parameters->memberNames.empty() && HoldsPrintable(r.parameters->memberNames.front());
}

bool AuthenticatesBy(const Request& r, const char* kind) {
    return EqualNoCase(r.user->authentication, kind);
}

constexpr Check kGroupName = {[](const Request& r) { return HoldsPrintable(r.parameters->objectName); },
                              "Invalid group name"};
constexpr Check kDepartmentName = {[](const Request& r) { return IsSet(r.department->name); },
                                   "Missing department name"};
// The department's text for a missing user name: clients know it so.
constexpr Check kUserName = {[](const Request& r) { return IsSet(r.user->userName); },
                             "Missing department name"};
constexpr Check kUserGroupName = {[](const Request& r) { return IsSet(r.userGroup->name); },
                                  "Missing user-group name"};

constexpr Check kAddMemberChecks[] = {
    kGroupName,
    {[](const Request& r) { return r.parameters->allMembers != 1; }, "-all parameter is not supported"},
    {HasMember, "Invalid member name"},
};
constexpr Check kDeleteMemberChecks[] = {
    kGroupName,
    {[](const Request& r) { return r.parameters->allMembers != 0 || HasMember(r); }, "Invalid member name"},
};
constexpr Check kDepartmentChecks[] = {kDepartmentName};
constexpr Check kUserChecks[] = {kUserName};
constexpr Check kAddUserChecks[] = {
    kUserName,
    {[](const Request& r) { return !AuthenticatesBy(r, "sql") || IsSet(r.user->linkUserName); },
     "Missing NetIQ username"},
    {[](const Request& r) { return !AuthenticatesBy(r, "nt") || IsSet(r.user->ntUserName); },
     "Missing NT username"},
    {[](const Request& r) {
         return AuthenticatesBy(r, "") || AuthenticatesBy(r, "sql") || AuthenticatesBy(r, "nt");
     },
     "Invalid authentication"},
};
constexpr Check kUserGroupChecks[] = {kUserGroupName};
constexpr Check kDepartmentPermissionChecks[] = {
    kUserGroupName,
    {[](const Request& r) { return IsSet(r.userGroup->departmentName); }, "Missing department name"},
};
constexpr Check kPermissionSetChecks[] = {
    kUserGroupName,
    {[](const Request& r) { return IsSet(r.userGroup->permissionSet); }, "Missing ugp name"},
};

struct Word {
    std::string_view word;
    std::span<const Check> checks;
};
constexpr Word kWords[] = {
    {"addgroup", {}},
    {"delgroup", {}},
    {"querygroup", {}},
    {"addreceiver", {}},
    {"delreceiver", {}},
    {"queryreceiver", {}},
    {"addrecvtogrp", kAddMemberChecks},
    {"addgrptogrp", kAddMemberChecks},
    {"delrecvfromgrp", kDeleteMemberChecks},
    {"delgrpfromgrp", kDeleteMemberChecks},
    {"adddept", kDepartmentChecks},
    {"deldept", kDepartmentChecks},
    {"querydept", kDepartmentChecks},
    {"adduser", kAddUserChecks},
    {"deluser", kUserChecks},
    {"moduser", kUserChecks},
    {"queryuser", kUserChecks},
    {"addusergroup", kUserGroupChecks},
    {"delusergroup", kUserGroupChecks},
    {"queryusergroup", kUserGroupChecks},
    {"setusergroupdept", kDepartmentPermissionChecks},
    {"setusergroupugp", kPermissionSetChecks},
};

}  // namespace

const char* RefusalOf(const AdministrationRequest& request, std::string_view method) {
    const std::string& command = request.parameters->command;
    if (!HoldsPrintable(command)) return "Invalid command";
    if (IsMessagingMethod(method)) return nullptr;
    if (!IsSet(request.admin->name) || !IsSet(request.admin->password)) {
        return "Missing Admin user-name and/or password";
    }
    const auto* word = std::find_if(std::begin(kWords), std::end(kWords),
                                    [&](const Word& row) { return row.word == command; });
    if (word == std::end(kWords)) return "Unknown command name";
    for (const Check& check : word->checks) {
        if (!check.holds(request)) return check.refusal;
    }
    return nullptr;
}

}  // namespace quorbel
