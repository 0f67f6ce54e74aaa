#include "soap/MethodTable.h"

#include <algorithm>
#include <array>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr EndRecords kMember = EndRecords::MemberKind;
constexpr EndRecords kAction = EndRecords::MessagingAction;
using H = FieldHandler;

// The last three codes do not follow the order of the rows: other programs know the codes, and a name
// that ends with two keys is decided by the order. Both stay as they are.
constexpr Method kMethods[] = {
    {"AddReceiver2Group", 128, "addrecvtogrp", H::AddReceiverToGroup, kMember, "receiver"},
    {"DeleteReceiverFromGroup", 129, "delrecvfromgrp", H::DeleteReceiverFromGroup, kMember, "receiver"},
    {"AddGroup2Group", 130, "addgrptogrp", H::AddGroupToGroup, kMember, "group"},
    {"DeleteGroupFromGroup", 131, "delgrpfromgrp", H::DeleteGroupFromGroup, kMember, "group"},
    {"AddGroup", 132, "addgroup", H::AddGroup},
    {"QueryGroup", 133, "querygroup", H::QueryGroup},
    {"DeleteGroup", 134, "delgroup", H::DeleteGroup},
    {"AddReceiver", 135, "addreceiver", H::AddReceiver},
    {"DeleteReceiver", 136, "delreceiver", H::DeleteReceiver},
    {"QueryReceiver", 137, "queryreceiver", H::QueryReceiver},
    {"AddDepartment", 138, "adddept", H::AddDepartment},
    {"DeleteDepartment", 139, "deldept", H::DeleteDepartment},
    {"QueryDepartment", 140, "querydept", H::QueryDepartment},
    {"AddUser", 141, "adduser", H::AddOrModifyUser},
    {"ModifyUser", 142, "moduser", H::AddOrModifyUser},
    {"DeleteUser", 143, "deluser", H::DeleteUser},
    {"QueryUser", 144, "queryuser", H::QueryUser},
    {"AddUserGroup", 145, "addusergroup", H::AddUserGroup},
    {"DeleteUserGroup", 146, "delusergroup", H::DeleteUserGroup},
    {"QueryUserGroup", 147, "queryusergroup", H::QueryUserGroup},
    {"SetUserGroupDeptPermission", 148, "setusergroupdept", H::DepartmentPermission},
    {"SetUserGroupUgp", 149, "setusergroupugp", H::PermissionSet},
    {"SendStdMessage", 150, "single", H::StandardMessage, kAction, "send"},
    {"SendQuickMessage", 151, "quick", H::QuickMessage, kAction, "quick"},
    {"QueryMessage", 152, "query", H::MessageQuery, kAction, "query"},
    {"QueryGroupMessage", 155, "query", H::MessageQuery, kAction, "querygroupmsg"},
    {"QueryMessageHistory", 154, "query", H::MessageQuery, kAction, "queryjobhistory"},
    {"ConfirmMessage", 153, "confirm", H::Confirmation, kAction, "confirm"},
};

constexpr std::size_t kMethodCount = kLastMethodCode - kFirstMethodCode + 1;
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

constexpr std::array<const Method*, kMethodCount> InEndOrder() {
    std::array<const Method*, kMethodCount> order{};
    for (std::size_t i = 0; i < kMethodCount; ++i) order[i] = ByCode(kEndCodes[i]);
    return order;
}
constexpr auto kEndOrder = InEndOrder();

}  // namespace

std::span<const Method> Methods() {
    return kMethods;
}

const Method* MethodOpenedBy(std::string_view element) {
    const auto* method = std::find_if(std::begin(kMethods), std::end(kMethods), [element](const Method& row) {
        return EndsWithNoCase(element, row.name);
    });
    return method == std::end(kMethods) ? nullptr : method;
}

const Method* MethodClosedBy(std::string_view element) {
    const auto* match = std::find_if(kEndOrder.begin(), kEndOrder.end(), [element](const Method* row) {
        return EndsWithNoCase(element, row->name);
    });
    return match == kEndOrder.end() ? nullptr : *match;
}

const Method* MethodOfCode(int code) {
    const Method* method = ByCode(code);
    return method == std::end(kMethods) ? nullptr : method;
}

bool IsMessagingMethod(std::string_view name) {
    return std::any_of(std::begin(kMethods), std::end(kMethods), [name](const Method& method) {
        return method.endRecords == EndRecords::MessagingAction && method.name == name;
    });
}

}  // namespace quorbel
