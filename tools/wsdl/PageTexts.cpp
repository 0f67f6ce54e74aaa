#include "tools/wsdl/PageTexts.h"

namespace quorbel {

namespace {

constexpr TextMeaning kFaults[] = {
    {"2004 Invalid command", Sent::No, "No method of the service in the body, or a GET."},
    {"2004 Missing Admin user-name and/or password", Sent::No, "Send szAdminName and szAdminPassword."},
    {"2004 Missing URL", Sent::No, "Send szURL, the paging server's address."},
    {"2004 Missing recipient", Sent::No, "Send szRecipientName; send the whole request."},
    {"2004 Invalid custom field name", Sent::No,
     "The name is one that the service itself writes, such as cmd."},
    {"2004 Paging server not permitted", Sent::No,
     "The operator does not allow this address in szURL or szURL2."},
    {"2004 Invalid group name", Sent::No, "Send the group's name."},
    {"2004 Invalid member name", Sent::No, "Send the member's name."},
    {"2004 Missing department name", Sent::No,
     "Send szDepartmentName, in SetUserGroupDeptPermission szDeptName, in user methods szUserName."},
    {"2004 Missing user-group name", Sent::No, "Send szUserGroupName."},
    {"2004 Missing ugp name", Sent::No, "Send szUpgName."},
    {"2004 Missing NetIQ username", Sent::No, "AddUser with szAuthen sql needs szLinkUserName."},
    {"2004 Missing NT username", Sent::No, "AddUser with szAuthen nt needs szNTUserName."},
    {"2004 Invalid authentication", Sent::No, "szAuthen is sql, nt or left out."},
    {"2012 and the transport's words", Sent::Perhaps,
     "An administration command was not answered in full. Behind 2012 stands one of the failures below."},
    {"2030 Invalid SOAP envelope length", Sent::No,
     "The request announces no length, or more bytes than come."},
    {"2030 Invalid SOAP message", Sent::No, "The body is not well-formed XML, or declares a document type."},
    {"2301 Invalid log directory", Sent::No,
     "The service cannot read its site or write its log: tell its operator."},
};

constexpr std::string_view kSafe = "Nothing was sent: safe to send again.";
constexpr std::string_view kFix = "Nothing was sent: correct the address.";
constexpr std::string_view kUnsure = "May have been executed: query before you send again.";

constexpr TextMeaning kFailures[] = {
    {"Couldn't connect to server", Sent::No, kSafe},
    {"Couldn't resolve host name", Sent::No, kSafe},
    {"Couldn't resolve proxy name", Sent::No, kSafe},
    {"SSL connect error", Sent::No, kSafe},
    {"SSL peer certificate or SSH remote key was not OK", Sent::No, kSafe},
    {"Problem with the SSL CA cert (path? access rights?)", Sent::No, kSafe},
    {"Failed initialization", Sent::No, kSafe},
    {"URL using bad/illegal format or missing URL", Sent::No, kFix},
    {"Unsupported protocol", Sent::Perhaps,
     "The address is neither http nor https, or what answers there does not speak HTTP. In the second case it may have "
     "been executed."},
    {"Weird server reply", Sent::Perhaps, kUnsure},
    {"Timeout was reached", Sent::Perhaps, kUnsure},
    {"Server returned nothing (no headers, no data)", Sent::Perhaps, kUnsure},
    {"Failure when receiving data from the peer", Sent::Perhaps, kUnsure},
    {"Failed sending data to the peer", Sent::Perhaps, kUnsure},
    {"Transferred a partial file", Sent::Perhaps, kUnsure},
    {"Out of memory", Sent::Perhaps, kUnsure},
};

}  // namespace

std::span<const TextMeaning> FaultMeanings() {
    return kFaults;
}

std::span<const TextMeaning> FailureMeanings() {
    return kFailures;
}

}  // namespace quorbel
