#include "tools/wsdl/PageTexts.h"

namespace quorbel {

namespace {

constexpr TextMeaning kFaults[] = {
    {"2004 Invalid command", "No method of the service in the body, or a GET."},
    {"2004 Missing Admin user-name and/or password", "Send szAdminName and szAdminPassword."},
    {"2004 Missing URL", "Send szURL, the paging server's address."},
    {"2004 Missing recipient", "Send szRecipientName; send the whole request."},
    {"2004 Invalid custom field name", "The name is one that the service itself writes, such as cmd."},
    {"2004 Paging server not permitted", "The operator does not allow this address in szURL or szURL2."},
    {"2004 Invalid group name", "Send the group's name."},
    {"2004 Invalid member name", "Send the member's name."},
    {"2004 Missing department name",
     "Send szDepartmentName, in SetUserGroupDeptPermission szDeptName, in user methods szUserName."},
    {"2004 Missing user-group name", "Send szUserGroupName."},
    {"2004 Missing ugp name", "Send szUpgName."},
    {"2004 Missing NetIQ username", "AddUser with szAuthen sql needs szLinkUserName."},
    {"2004 Missing NT username", "AddUser with szAuthen nt needs szNTUserName."},
    {"2004 Invalid authentication", "szAuthen is sql, nt or left out."},
    {"2012 and the transport's words",
     "An administration command was not answered in full. It may have been executed unless the words say that no "
     "connection was made."},
    {"2030 Invalid SOAP envelope length", "The request announces no length, or more bytes than come."},
    {"2030 Invalid SOAP message", "The body is not well-formed XML, or declares a document type."},
    {"2301 Invalid log directory", "The service cannot read its site or write its log: tell its operator."},
};

constexpr std::string_view kSafe =
    "Nothing was sent: safe to send again. With szURL2, these are the words of the second attempt.";
constexpr std::string_view kUnsure = "May have been executed: query before you send again.";

constexpr TextMeaning kFailures[] = {
    {"Couldn't connect to server", kSafe},
    {"Couldn't resolve host name", kSafe},
    {"SSL peer certificate or SSH remote key was not OK", kSafe},
    {"Problem with the SSL CA cert (path? access rights?)", kSafe},
    {"SSL connect error", kSafe},
    {"URL using bad/illegal format or missing URL", kSafe},
    {"Timeout was reached", kUnsure},
    {"Server returned nothing (no headers, no data)", kUnsure},
    {"Failure when receiving data from the peer", kUnsure},
    {"Failed sending data to the peer", kUnsure},
    {"Transferred a partial file", kUnsure},
    {"Unsupported protocol",
     "The address is neither http nor https, or what answers there does not speak HTTP. In the second case it may have "
     "been executed."},
};

}  // namespace

std::span<const TextMeaning> FaultMeanings() {
    return kFaults;
}

std::span<const TextMeaning> FailureMeanings() {
    return kFailures;
}

}  // namespace quorbel
