#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "util/TextBuffer.h"

namespace quorbel {

/// The numbered places of a request record. One place serves several methods where their elements mean alike;
/// the numbers are fixed, and those left out here are never filled.
enum class Slot {
    Url = 1,
    Url2,
    CommandWord,
    ObjectName,
    MemberName,
    MemberKind,
    GroupType = 8,
    Department,
    Description,
    EnableOwnerSettings,
    User,
    AlertOwner,
    LimitAccess,
    Recipient,  ///< the recipient of a message; the receiver of the receiver methods
    ReceiverType,
    Pin,
    Carrier,
    BackupPin,
    BackupCarrier,
    VoiceEnable,
    ReceiverTimeZone,
    KeepAlpha,
    ReceiverEmail,
    EmailFailover,
    EmailCc,
    VoiceNumber,
    FirstName,
    LastName,
    SecurityCode,
    AccountName,
    AccountPassword,
    CanUpdateReceiver,
    CanUpdateSchedule,
    DeviceStatus,
    ForwardTo,
    UserName,
    Password,
    UserDescription,
    UserGroup,
    UserIp,
    UserEmail,
    Gui,
    Cli,
    AccessCode,
    UserTimeZone,
    NewUserName,
    ResultToEmail,
    LinkUserName,
    LinkPassword,
    DbHost,
    AppHost,
    NtUserName,
    NtPassword,
    NtDomain,
    Authentication,
    UserGroupName = 58,
    UserGroupDescription,
    DepartmentOfUserGroup,
    PermissionSet,
    FirstPermission = 62,  ///< bLog; the permission booleans follow in the order of the permission table
    LastPermission = 97,
    AdminName = 98,
    AdminPassword,
    Delay = 102,
    MessagingAction,
    Message = 106,
    JobId,
    Priority,
    TimeStamp,
    Sender = 111,
    ForwardReply,
    Subject,
};

inline constexpr std::size_t kSlotCount = 117;

/// One repeated item of a request: a response action (szResponse, szAction, bFinal) or a custom field
/// (szFieldName, szFieldValue, nothing).
using RequestItem = std::array<std::optional<TextBuffer>, 3>;

/// Repeated items in document order. `count` runs with the end tags, so a nil item is counted as an entry
/// without members; `items` always holds at least that many.
struct RequestItems {
    std::size_t count = 0;
    std::vector<RequestItem> items;

    /// The item that the next end tag will count.
    RequestItem& Current() {
        if (items.size() <= count) items.resize(count + 1);
        return items[count];
    }
};

/// What one SOAP request said, as text: every element fills its slot, and an absent one leaves it
/// without a value, which is not the same as an empty text for booleans.
struct RequestRecord {
    std::array<std::optional<TextBuffer>, kSlotCount + 1> slots;
    RequestItems responseActions;
    RequestItems customFields;

    std::optional<TextBuffer>& operator[](Slot slot) { return slots[static_cast<std::size_t>(slot)]; }
    const std::optional<TextBuffer>& operator[](Slot slot) const {
        return slots[static_cast<std::size_t>(slot)];
    }
    bool Has(Slot slot) const { return (*this)[slot].has_value(); }
    /// The slot's text; empty when the element was absent.
    std::string_view Text(Slot slot) const { return Has(slot) ? (*this)[slot]->Text() : std::string_view(); }
};

}  // namespace quorbel
