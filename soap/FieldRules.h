#pragma once

#include <span>
#include <string_view>

#include "soap/RequestRecord.h"

namespace quorbel {

/// What character data does to a field that is being captured.
enum class OnData {
    Replace,  ///< only the last chunk stays; every line break and entity begins a new chunk
    Append,   ///< the text is kept whole
};

/// What a field's end tag does.
enum class OnEnd {
    StopCapture,
    StopUrlCapture,  ///< stops the capture of szURL and leaves the field's own running
    KeepCapturing,   ///< starts the capture, so that all that follows in the method lands here
};

/// What a field element is.
enum class FieldKind {
    Text,                ///< fills `slot`
    ResponseAction,      ///< wraps one response action
    ResponseActionPart,  ///< fills member `part` of the response action around it
    CustomField,         ///< wraps one custom field
    CustomFieldPart,     ///< fills member `part` of the custom field around it
};

/// One element that a method, or every method, knows.
struct FieldRule {
    std::string_view element;
    Slot slot = {};
    FieldKind kind = FieldKind::Text;
    std::size_t part = 0;
    OnData onData = OnData::Replace;
    OnEnd onEnd = OnEnd::StopCapture;
};

/// Which fields a method carries besides the common ones; methods that share a row share their capture flags.
enum class FieldHandler {
    Common,
    AddReceiverToGroup,
    DeleteReceiverFromGroup,
    AddGroupToGroup,
    DeleteGroupFromGroup,
    AddGroup,
    QueryGroup,
    DeleteGroup,
    AddReceiver,
    DeleteReceiver,
    QueryReceiver,
    AddDepartment,
    DeleteDepartment,
    QueryDepartment,
    AddOrModifyUser,
    DeleteUser,
    QueryUser,
    AddUserGroup,
    DeleteUserGroup,
    QueryUserGroup,
    DepartmentPermission,
    PermissionSet,
    StandardMessage,
    QuickMessage,
    MessageQuery,
    Confirmation,
};
inline constexpr std::size_t kFieldHandlerCount = static_cast<std::size_t>(FieldHandler::Confirmation) + 1;

/// A handler's fields, in the published order of its elements.
std::span<const FieldRule> FieldsOf(FieldHandler handler);

/// More fields than any handler has: the room for its capture flags.
inline constexpr std::size_t kMaxFields = 32;

}  // namespace quorbel
