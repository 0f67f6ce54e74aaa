#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quorbel {

/// The last eight letters of a name as one number, letter case aside; a shorter name leaves the upper bytes zero.
constexpr std::uint64_t LastLetters(std::string_view name) {
    constexpr unsigned char kWithoutCase = 0xDF;
    std::uint64_t letters = 0;
    for (const char c : name.substr(name.size() - std::min<std::size_t>(name.size(), 8))) {
        letters = letters << 8 | (static_cast<unsigned char>(c) & kWithoutCase);
    }
    return letters;
}

/// The name of a field or method. Each element of a request is compared with all of them, so a name carries what decides
/// nearly every comparison in one step.
struct ElementName : std::string_view {
    constexpr ElementName(const char* text)
        : std::string_view(text),
          lastLetters(LastLetters(text)),
          counted(size() < 8 ? (std::uint64_t{1} << 8 * size()) - 1 : ~std::uint64_t{0}) {}

    std::uint64_t lastLetters;
    std::uint64_t counted;  ///< which of their bits count
};

/// The name in a tag of a request, to be compared with the names of fields and methods; borrows its text.
class TagName {
public:
    explicit TagName(std::string_view name) : name_(name), lastLetters_(LastLetters(name)) {}
    /// True when it ends with the name, letter case aside: a namespace prefix is passed over.
    bool EndsWith(const ElementName& name) const {
        return ((lastLetters_ ^ name.lastLetters) & name.counted) == 0 && IsEnd(name);
    }

private:
    bool IsEnd(std::string_view name) const;

    std::string_view name_;
    std::uint64_t lastLetters_;
};

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

/// What character data does to a field that is being captured.
enum class OnData {
    Replace,  ///< only the last piece stays; every line break and entity begins a new piece
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

/// When the service refuses a request without the field, or drops an item without it.
enum class Required { No, Always, ForAdministration };

/// One element that a method, or every method, knows.
struct Field {
    ElementName element;
    Slot slot = {};
    FieldKind kind = FieldKind::Text;
    std::size_t part = 0;
    OnData onData = OnData::Replace;
    OnEnd onEnd = OnEnd::StopCapture;
    Required required = Required::No;
};

/// True for an element that repeats and has members.
constexpr bool IsItem(const Field& field) {
    return field.kind == FieldKind::ResponseAction || field.kind == FieldKind::CustomField;
}
/// True for a member of such an element.
constexpr bool IsPart(const Field& field) {
    return field.kind == FieldKind::ResponseActionPart || field.kind == FieldKind::CustomFieldPart;
}

/// What a method's end tag records besides ending it.
enum class EndRecords { Nothing, MemberKind, MessagingAction };

/// One SOAP method of the service. Copies share the fields, which live as long as the program.
struct Method {
    ElementName name;  ///< also what g_szCommand and the answer's elements carry
    int code;          ///< 128 to 155
    std::string_view
        commandWord;  ///< recorded at the start tag; the server's word of an administration method
    std::span<const Field> fields;  ///< besides the common ones, in the published order
    std::string_view endWord = {};
    EndRecords endRecords = EndRecords::Nothing;
    int flagsOf = 0;  ///< the code of the method whose capture flags this one shares; 0: its own
};

inline constexpr int kFirstMethodCode = 128;
inline constexpr int kLastMethodCode = 155;
inline constexpr int kNoMethod = kLastMethodCode + 1;  ///< the current code of a run that parsed no method
inline constexpr std::size_t kMethodCount = kLastMethodCode - kFirstMethodCode + 1;

/// No method has more fields; the room for its capture flags.
inline constexpr std::size_t kMaxFields = 32;

/// The fields that every method carries.
std::span<const Field> CommonFields();

/// All methods, in the order in which a start tag is tested against them.
std::span<const Method> Methods();

/// The method whose name ends a start tag's name, letter case aside; null when there is none.
const Method* MethodOpenedBy(const TagName& element);
/// The method whose name ends an end tag's name. The order of these tests differs from that of start tags.
const Method* MethodClosedBy(const TagName& element);

/// True when the service refuses the method without this field, or drops an item without it.
bool IsRequired(const Method& method, const Field& field);

/// True for the six methods that send, query and confirm messages; exact spelling.
bool IsMessagingMethod(std::string_view name);

}  // namespace quorbel
