#include "tools/wsdl/Notes.h"

#include <algorithm>

namespace quorbel {

namespace {

constexpr std::string_view kServiceNote =
    "Send the elements in the order given here and leave out what you do not use. Only szMessage is kept "
    "whole. Of any other text that holds a line break, or a character that travels as an entity "
    "(ampersand, angle brackets, with some toolkits quotes), only the last piece arrives, unless it is sent "
    "as one CDATA section without line breaks. An element with an xsi:nil attribute counts as absent. An "
    "empty text counts as none, an empty boolean as true. A letter beyond ASCII reaches the paging server as "
    "%ff for each of its bytes.";

struct MethodNote {
    std::string_view method;
    std::string_view text;
};

constexpr MethodNote kMethodNotes[] = {
    {"AddReceiver2Group", "Makes a receiver a member of a group."},
    {"DeleteReceiverFromGroup", "Ends a receiver's membership in a group."},
    {"AddGroup2Group", "Makes a group a member of the master group."},
    {"DeleteGroupFromGroup", "Ends a group's membership in the master group."},
    {"AddGroup", "Adds a group to the directory."},
    {"QueryGroup", "Tells what the server knows of a group."},
    {"DeleteGroup", "Deletes a group from the directory."},
    {"AddReceiver", "Adds a receiver, somebody's pager or telephone, to the directory."},
    {"DeleteReceiver", "Deletes a receiver from the directory."},
    {"QueryReceiver", "Tells what the server knows of a receiver."},
    {"AddDepartment", "Adds a department."},
    {"DeleteDepartment", "Deletes a department."},
    {"QueryDepartment", "Tells what the server knows of a department."},
    {"AddUser", "Adds a user of the paging server."},
    {"ModifyUser", "Changes a user; szNewUserName renames it."},
    {"DeleteUser", "Deletes a user."},
    {"QueryUser", "Tells what the server knows of a user."},
    {"AddUserGroup",
     "Adds a user group. Only its name and description reach the paging server. Takes no szURL2."},
    {"DeleteUserGroup", "Deletes a user group."},
    {"QueryUserGroup", "Tells what the server knows of a user group."},
    {"SetUserGroupDeptPermission",
     "Names the department that a user group works in. The booleans do not reach the paging server."},
    {"SetUserGroupUgp", "Gives a user group a permission set. The booleans do not reach the paging server."},
    {"SendStdMessage", "Sends a message to a receiver or a group of the directory."},
    {"SendQuickMessage", "Sends a message to a carrier's number that the directory need not know."},
    {"QueryMessage", "Tells what became of a message."},
    {"QueryGroupMessage", "Tells what became of all messages of a job."},
    {"QueryMessageHistory", "Tells what happened to a message, step by step."},
    {"ConfirmMessage", "Confirms a message."},
};

struct ElementNote {
    std::string_view element;
    std::string_view text;
};

constexpr std::string_view kSticky =
    "Send it only with true, or leave it out: sent as false, nil or empty it can be granted all the same.";
constexpr std::string_view kNotPassedOn = "Accepted, but not passed on to the paging server.";

constexpr ElementNote kElementNotes[] = {
    {"szURL", "The paging server's address, http or https."},
    {"szURL2",
     "A second paging server, tried once when the first fails in any way. Keep it last: text behind it, "
     "white space too, takes its place."},
    {"szMessage", "Kept whole, line breaks and special characters included."},
    {"nPriority", "As the paging server numbers its priorities."},
    {"nTimeZone", "The paging server's identifier of the time zone; a text."},
    {"nDelay", kNotPassedOn},
    {"bCLI", kNotPassedOn},
    {"szAppHost", kNotPassedOn},
    {"ResponseActionData", "An answer that the recipient can choose, with what the server then does."},
    {"szResponse", "An item without it ends the list: it and those behind it are dropped."},
    {"CustomFieldData", "A line of your own for the paging server's command."},
    {"szFieldName", "An item without it ends the list: it and those behind it are dropped."},
    {"szAuthen", "sql (then szLinkUserName is required), nt (then szNTUserName is), or nothing."},
    {"szVoiceNumber", "Used only when szCarrier is Voice."},
    {"bVoiceEnable", "Used only when szCarrier is Voice; then on unless sent as false."},
    {"bAddAndDeleteGroup",
     "Excludes szURL2: what stands behind this element is lost, so leave it out to name a second server."},
    {"bSendreceWithoutDeptLicense", kSticky},
    {"bSendgrpWithoutDeptLicense", kSticky},
    {"bRreceiverWithoutDeptLicense", kSticky},
    {"bAddgroupWithoutDeptLicense", kSticky},
    {"bModgroupWithoutDeptLicense", kSticky},
};

}  // namespace

std::string_view ServiceNote() {
    return kServiceNote;
}

std::string_view NoteOf(const Method& method) {
    const auto* row = std::find_if(std::begin(kMethodNotes), std::end(kMethodNotes),
                                   [&](const MethodNote& note) { return note.method == method.name; });
    return row == std::end(kMethodNotes) ? std::string_view() : row->text;
}

std::string_view NoteOf(const Field& element) {
    const auto* row = std::find_if(std::begin(kElementNotes), std::end(kElementNotes),
                                   [&](const ElementNote& note) { return note.element == element.element; });
    return row == std::end(kElementNotes) ? std::string_view() : row->text;
}

}  // namespace quorbel
