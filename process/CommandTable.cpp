#include "process/Commands.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iterator>

#include "util/StringRoutines.h"

// What the server is sent: the lines of each object in the order in which they are posted, what must hold before
// a command is posted, and the commands. To add a line to a command, add a row where it belongs.

namespace quorbel {

namespace {

using Source = CommandSource;

// Values that no slot gives.

template <auto Record, auto Field>
std::string FieldOf(const Source& s) {
    return s.administration->*Record->*Field;
}
template <auto Field>
constexpr auto Parameter = FieldOf<&AdministrationRequest::parameters, Field>;
template <auto Field>
constexpr auto Admin = FieldOf<&AdministrationRequest::admin, Field>;
template <auto Field>
constexpr auto Department = FieldOf<&AdministrationRequest::department, Field>;
template <auto Field>
constexpr auto User = FieldOf<&AdministrationRequest::user, Field>;
template <auto Field>
constexpr auto UserGroup = FieldOf<&AdministrationRequest::userGroup, Field>;
template <auto Field>
constexpr auto Schedule = FieldOf<&AdministrationRequest::schedule, Field>;
template <auto Field>
std::string Message(const Source& s) {
    return s.message->*Field;
}
/// A flag line of groups and memberships: only a flag of exactly 1 counts.
template <auto Flag>
std::string YesWhen(const Source& s) {
    return s.administration->parameters->*Flag == 1 ? "YES" : "";
}
template <auto Flag>
std::string OnWhen(const Source& s) {
    return s.administration->user->*Flag == 1 ? "on" : "";
}
std::string Target(const Source& s) {
    return std::string(s.target);
}

constexpr Line kCredentialLines[] = {
    {"adminusername", Admin<&AdminInfo::name>},
    {"adminpassword", Admin<&AdminInfo::password>},
};

constexpr Line kGroupLines[] = {
    {"groupname", Slot::ObjectName},
    {"grouptype", Slot::GroupType},
    {"department", Slot::Department},
    {"description", Slot::Description},
    {"newname", Parameter<&AdministrationParameters::newName>},
    {"topic", Parameter<&AdministrationParameters::topic>},
    {"enableownersettings", YesWhen<&AdministrationParameters::enableOwnerSettings>},
    {"username", Slot::User},
    {"alertowner", YesWhen<&AdministrationParameters::alertOwner>},
    {"limitaccess", YesWhen<&AdministrationParameters::limitAccess>},
    {"isrecipusergrp", YesWhen<&AdministrationParameters::recipientUserGroup>},
    {"disable", YesWhen<&AdministrationParameters::disable>},
};

std::string IfVoice(const Source& s, std::string_view text) {
    return EqualNoCase(s.texts[Slot::Carrier], "Voice") ? std::string(text) : "";
}
std::string_view OrDefault(std::string_view text, std::string_view otherwise) {
    return text.empty() ? otherwise : text;
}
std::string VoiceEnable(const Source& s) {
    return IfVoice(s, OrDefault(s.texts[Slot::VoiceEnable], "ON"));
}
std::string VoiceNumber(const Source& s) {
    return IfVoice(s, s.texts[Slot::VoiceNumber]);
}
/// Kept for compatibility: a receiver always has a status.
std::string DeviceStatus(const Source& s) {
    return std::string(OrDefault(s.texts[Slot::DeviceStatus], "1"));
}

constexpr Line kReceiverLines[] = {
    {"rcv_name", Slot::Recipient},
    {"rcv_type", Slot::ReceiverType},
    {"department", Slot::Department},
    {"description", Slot::Description},
    {"carrier", Slot::Carrier},
    {"pin", Slot::Pin},
    {"backupcarrier", Slot::BackupCarrier},
    {"backuppin", Slot::BackupPin},
    {"voice", VoiceEnable},
    {"voicenumber", VoiceNumber},
    {"firstname", Slot::FirstName},
    {"lastname", Slot::LastName},
    {"securitycode", Slot::SecurityCode},
    {"devicestatus", DeviceStatus},
    {"forwardto", Slot::ForwardTo},
    {"email", Slot::ReceiverEmail},
    {"emailcc", Slot::EmailCc},
    {"emailfailover", Slot::EmailFailover},
    {"timezone", Slot::ReceiverTimeZone},
    {"acctname", Slot::AccountName},
    {"acctpassword", Slot::AccountPassword},
    {"acctmodrece", Slot::CanUpdateReceiver},
    {"acctmodschd", Slot::CanUpdateSchedule},
    {"keepalpha", Slot::KeepAlpha},
};

constexpr Line kDepartmentLines[] = {
    {"name", Department<&DepartmentInfo::name>},
    {"desp", Department<&DepartmentInfo::description>},
    {"newname", Department<&DepartmentInfo::newName>},
};

bool AuthenticatesBy(const AdministrationRequest& request, const char* kind) {
    return EqualNoCase(request.user->authentication, kind);
}
template <auto Field>
std::string IfSql(const Source& s) {
    return AuthenticatesBy(*s.administration, "sql") ? User<Field>(s) : "";
}
template <auto Field>
std::string IfNt(const Source& s) {
    return AuthenticatesBy(*s.administration, "nt") ? User<Field>(s) : "";
}

constexpr Line kUserLines[] = {
    {"hname", User<&UserInfo::userName>},
    {"name", User<&UserInfo::userName>},
    {"newname", User<&UserInfo::newUserName>},
    {"desp", User<&UserInfo::description>},
    {"password", User<&UserInfo::password>},
    {"retypepassword", User<&UserInfo::password>},
    {"usergroup", User<&UserInfo::userGroup>},
    {"email", User<&UserInfo::email>},
    {"timezoneid", User<&UserInfo::timeZone>},
    {"accesscode", User<&UserInfo::accessCode>},
    {"accounttype", User<&UserInfo::accountType>},
    {"ip", User<&UserInfo::ip>},
    {"gui", OnWhen<&UserInfo::gui>},
    {"result2email", OnWhen<&UserInfo::resultToEmail>},
    {"authen", User<&UserInfo::authentication>},
    {"netiqusername", IfSql<&UserInfo::linkUserName>},
    {"netiqpassword", IfSql<&UserInfo::linkPassword>},
    {"netiqretypepassword", IfSql<&UserInfo::linkPassword>},
    {"ntusername", IfNt<&UserInfo::ntUserName>},
    {"ntpassword", IfNt<&UserInfo::ntPassword>},
    {"ntretypepassword", IfNt<&UserInfo::ntPassword>},
    {"ntdomain", IfNt<&UserInfo::ntDomain>},
    {"netiqdbhost", User<&UserInfo::dbHost>},
    {"netiqapphost", User<&UserInfo::appHost>},
};

constexpr Line kUserGroupLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"newname", UserGroup<&UserGroupInfo::newName>},
};

constexpr Line kDepartmentPermissionLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"deptname", UserGroup<&UserGroupInfo::departmentName>},
};

constexpr Line kPermissionSetLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"ugpname", UserGroup<&UserGroupInfo::permissionSet>},
};

constexpr Line kMembershipLines[] = {
    {"grp_name", Slot::ObjectName},
    {"all", YesWhen<&AdministrationParameters::allMembers>},
    {"mtype", Slot::MemberKind},
    {"mname", Target},
};

// No SOAP method reaches the objects from here on; programs that link the command process do.

constexpr Line kEnablingLines[] = {
    {"name", OtherValue{}},
    {"enable", OtherValue{}},
    {"membername", OtherValue{}},
};

constexpr Line kScheduleLines[] = {
    {"name", Schedule<&ScheduleInfo::name>},
    {"schdname", Schedule<&ScheduleInfo::scheduleName>},
    {"schdtype", Schedule<&ScheduleInfo::scheduleType>},
    {"starthr", Schedule<&ScheduleInfo::startHour>},
    {"startmin", Schedule<&ScheduleInfo::startMinute>},
    {"endhr", Schedule<&ScheduleInfo::endHour>},
    {"endmin", Schedule<&ScheduleInfo::endMinute>},
    {"startdate", Schedule<&ScheduleInfo::startDate>},
    {"enddate", Schedule<&ScheduleInfo::endDate>},
    {"recurrences", Schedule<&ScheduleInfo::recurrences>},
    {"weekdays", Schedule<&ScheduleInfo::weekdays>},
    {"every", Schedule<&ScheduleInfo::every>},
    {"dayofmonth", Schedule<&ScheduleInfo::dayOfMonth>},
    {"weekofmonth", Schedule<&ScheduleInfo::weekOfMonth>},
    {"dayofweek", Schedule<&ScheduleInfo::dayOfWeek>},
    {"fordays", Schedule<&ScheduleInfo::forDays>},
    {"membername", Schedule<&ScheduleInfo::memberName>},
    {"membertype", Schedule<&ScheduleInfo::memberType>},
    {"delay", Schedule<&ScheduleInfo::delay>},
};

/// The whole number at the start of a text, clamped to what an int holds.
std::string Offset(const Source& s) {
    const std::string text(OtherValueOf(s, "offset"));
    return std::to_string(std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

constexpr Line kTimeZoneLines[] = {
    {"name", OtherValue{}},
    {"desp", OtherValue{}},
    {"offset", Offset},
};

constexpr Line kActionLines[] = {
    {"name", OtherValue{}},          {"desp", OtherValue{}},         {"cmdline", OtherValue{}},
    {"type", OtherValue{}},          {"ivr", OtherValue{}},          {"smtp", OtherValue{}},
    {"remote", OtherValue{}},        {"responsetext", OtherValue{}}, {"odbc", OtherValue{}},
    {"dbsource", OtherValue{}},      {"dbusername", OtherValue{}},   {"dbuserpwd", OtherValue{}},
    {"dbquerystring", OtherValue{}}, {"accttype", OtherValue{}},     {"acctusername", OtherValue{}},
    {"acctpassword", OtherValue{}},
};

constexpr Line kMessengerLines[] = {
    {"name", OtherValue{}},        {"desp", OtherValue{}},        {"type", OtherValue{}},
    {"interval", OtherValue{}},    {"queuename", OtherValue{}},   {"queuesize", OtherValue{}},
    {"idle", OtherValue{}},        {"device", OtherValue{}},      {"initcmd1", OtherValue{}},
    {"initstrings", OtherValue{}}, {"dialcmd", OtherValue{}},     {"hosturl", OtherValue{}},
    {"databits", OtherValue{}},    {"stopbits", OtherValue{}},    {"parity", OtherValue{}},
    {"baud", OtherValue{}},        {"port", OtherValue{}},        {"password", OtherValue{}},
    {"smscid", OtherValue{}},      {"flowcontrol", OtherValue{}},
};

constexpr Line kCarrierLines[] = {
    {"name", OtherValue{}},        {"desp", OtherValue{}},       {"type", OtherValue{}},
    {"maxmsglen", OtherValue{}},   {"maxcomblen", OtherValue{}}, {"truncate", OtherValue{}},
    {"split", OtherValue{}},       {"retry", OtherValue{}},      {"bkcarr", OtherValue{}},
    {"bkcarr2", OtherValue{}},     {"disable", OtherValue{}},    {"queuename", OtherValue{}},
    {"pintemplate", OtherValue{}},
};

// What must hold before a command is posted.

using Request = AdministrationRequest;

bool IsSet(const char* field) {
    return field[0] != '\0';
}

bool HasMember(const Request& r) {
    return !r.parameters->memberNames.empty() && HoldsPrintable(r.parameters->memberNames.front());
}

constexpr Check kGroupName = {
    [](const Request& r) { return HoldsPrintable((*r.parameters)[Slot::ObjectName]); }, "Invalid group name"};
constexpr Check kDepartmentName = {[](const Request& r) { return IsSet(r.department->name); },
                                   "Missing department name"};
// Kept for compatibility: the department's text for a missing user name.
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

constexpr OpenTo kRequests = OpenTo::Requests;
constexpr OpenTo kPrograms = OpenTo::Programs;
constexpr SentFor kEachMember = SentFor::EachMember;

constexpr Command kCommands[] = {
    {"addgroup", kGroupLines},
    {"modgroup", kGroupLines, {}, kPrograms},
    {"delgroup", kGroupLines},
    {"querygroup", kGroupLines},
    {"addgrpassocdept", kGroupLines, {}, kPrograms},
    {"querygroupmem", kGroupLines, {}, kPrograms},
    {"addreceiver", kReceiverLines},
    {"modreceiver", kReceiverLines, {}, kPrograms},
    {"delreceiver", kReceiverLines},
    {"queryreceiver", kReceiverLines},
    {"addreceiverassocdept", kReceiverLines, {}, kPrograms},
    {"adddept", kDepartmentLines, kDepartmentChecks},
    {"moddept", kDepartmentLines, {}, kPrograms},
    {"deldept", kDepartmentLines, kDepartmentChecks},
    {"querydept", kDepartmentLines, kDepartmentChecks},
    {"adduser", kUserLines, kAddUserChecks},
    {"moduser", kUserLines, kUserChecks},
    {"deluser", kUserLines, kUserChecks},
    {"queryuser", kUserLines, kUserChecks},
    {"addusergroup", kUserGroupLines, kUserGroupChecks},
    {"modusergroup", kUserGroupLines, {}, kPrograms},
    {"delusergroup", kUserGroupLines, kUserGroupChecks},
    {"queryusergroup", kUserGroupLines, kUserGroupChecks},
    {"setusergroupdept", kDepartmentPermissionLines, kDepartmentPermissionChecks},
    {"setusergroupugp", kPermissionSetLines, kPermissionSetChecks},
    {"addrecvtogrp", kMembershipLines, kAddMemberChecks, kRequests, kEachMember},
    {"delrecvfromgrp", kMembershipLines, kDeleteMemberChecks, kRequests, kEachMember},
    {"addgrptogrp", kMembershipLines, kAddMemberChecks, kRequests, kEachMember},
    {"delgrpfromgrp", kMembershipLines, kDeleteMemberChecks, kRequests, kEachMember},
    {"enablegrp", kEnablingLines, {}, kPrograms},
    {"enablegrpmem", kEnablingLines, {}, kPrograms},
    {"addschdtoreceiver", kScheduleLines, {}, kPrograms},
    {"addschdtoonduty", kScheduleLines, {}, kPrograms},
    {"modschdtoreceiver", kScheduleLines, {}, kPrograms},
    {"modschdtoonduty", kScheduleLines, {}, kPrograms},
    {"delschdfromreceiver", kScheduleLines, {}, kPrograms},
    {"delschdfromonduty", kScheduleLines, {}, kPrograms},
    {"addtimezone", kTimeZoneLines, {}, kPrograms},
    {"modtimezone", kTimeZoneLines, {}, kPrograms},
    {"deltimezone", kTimeZoneLines, {}, kPrograms},
    {"addaction", kActionLines, {}, kPrograms},
    {"modaction", kActionLines, {}, kPrograms},
    {"delaction", kActionLines, {}, kPrograms},
    {"addmessenger", kMessengerLines, {}, kPrograms},
    {"modmessenger", kMessengerLines, {}, kPrograms},
    {"delmessenger", kMessengerLines, {}, kPrograms},
    {"addcarrier", kCarrierLines, {}, kPrograms},
    {"modcarrier", kCarrierLines, {}, kPrograms},
    {"delcarrier", kCarrierLines, {}, kPrograms},
};

// Messages.

constexpr Line kJobLines[] = {{"jobid", Slot::JobId}};
constexpr Line kMajorJobLines[] = {{"jobmajorid", Slot::JobId}};
constexpr Line kLastMessageLines[] = {
    {"rcv_name", Target},
    {"securitycode", Message<&MessagingParameters::securityCode>},
};
constexpr Line kAnswerLines[] = {
    {"jobid", Slot::JobId},
    {"comments", Message<&MessagingParameters::comments>},
    {"conf_by", Message<&MessagingParameters::confirmer>},
};

/// The template's parameters, up to the first whose name or value is missing.
void AddTemplatePairs(CommandParameters& command, const MessagingParameters& message) {
    const std::size_t count =
        std::min({message.templateNames.size(), message.templateValues.size(), kMaxTemplatePairs});
    for (std::size_t i = 0; i < count; ++i) {
        if (message.templateNames[i].empty() || message.templateValues[i].empty()) return;
        command.AddParameterPair("param", message.templateNames[i], "value", message.templateValues[i]);
    }
}

void AddFormLines(CommandParameters& command, const Source& s) {
    const MessagingParameters& message = *s.message;
    if (message.form == kVoiceForm) {
        command.AddParameter("content_type", "voice");
        if (message.templateName.empty()) return;
        command.AddParameter("template", message.templateName);
        AddTemplatePairs(command, message);
    } else if (message.form == kFaxForm) {
        command.AddParameter("content_type", "fax");
        command.AddParameter("cover_page", message.coverPage);
    }
}

void AddExtraLines(CommandParameters& command, const Source& s) {
    for (const auto& [action, response, final] : ActionsOf(s.message->extras)) {
        command.AddParameter("response", TextOf(response));
        command.AddParameter("action", TextOf(action));
        command.AddParameter("final", TextOf(final));
    }
    for (const auto& [name, value, nothing] : PairsOf(s.message->extras)) {
        command.AddParameter(TextOf(name), TextOf(value));
    }
}

constexpr bool kIsNeeded = true;

constexpr Line kSendLines[] = {
    {"sender", Slot::Sender},
    {"email_subject", Slot::Subject},
    {"", AddFormLines},
    {"", RecipientLine{}, kIsNeeded},
    {"priority", Slot::Priority},
    {"nametime", Slot::TimeStamp},
    {"email_receipt", Slot::ForwardReply},
    {"jobid", Slot::JobId},
    {"message", Slot::Message, kIsNeeded},
    {"", AddExtraLines},
};

constexpr Line kQuickLines[] = {
    {"sender", Slot::Sender},
    {"email_subject", Slot::Subject},
    {"", AddFormLines},
    {"", RecipientLine{}, kIsNeeded},
    {"priority", Slot::Priority},
    {"nametime", Slot::TimeStamp},
    {"email_receipt", Slot::ForwardReply},
    {"jobid", Slot::JobId},
    {"pin", Slot::Pin, kIsNeeded},
    {"message", Slot::Message, kIsNeeded},
    {"alt_pin", Slot::BackupPin},
    {"alt_carrier_name", Slot::BackupCarrier},
    {"", AddExtraLines},
};

// A standard send stands last: it is what any other code and action means.
constexpr MessageCommand kMessageCommands[] = {
    {kQueryStatus, "query", "query_status", kJobLines},
    {kQueryLastMessage, {}, "query_last_msg", kLastMessageLines},
    {kConfirm, "confirm", "confirm", kAnswerLines},
    {kReject, {}, "reject", kAnswerLines},
    {kQueryHistory, "queryjobhistory", "queryjobhistory", kJobLines},
    {kQueryGroupMessage, "querygroupmsg", "queryjobgroupmsg", kMajorJobLines},
    {kQuickSend, "quick", {}, kQuickLines, "carrier_name"},
    {kReceiverSend, {}, {}, kSendLines, "rcv_name"},
    {kGroupSend, {}, {}, kSendLines, "grp_name"},
    {kCascadeSend, {}, {}, kSendLines, "casc_name"},
    {kDutySend, {}, {}, kSendLines, "duty_name"},
    {kRotationSend, {}, {}, kSendLines, "rota_name"},
    {kFollowSend, {}, {}, kSendLines, "foll_name"},
    {kStandardSend, "send", {}, kSendLines, "name"},
};

template <typename Condition>
const MessageCommand& FirstOf(Condition holds) {
    const auto* last = std::prev(std::end(kMessageCommands));
    return *std::find_if(std::begin(kMessageCommands), last, holds);
}

}  // namespace

std::string_view OtherValueOf(const CommandSource& source, std::string_view name) {
    for (const auto& [key, value] : source.administration->parameters->otherValues) {
        if (key == name) return value;
    }
    return {};
}

std::span<const Line> CredentialLines() {
    return kCredentialLines;
}

const Command* CommandOf(std::string_view word) {
    const auto* row = std::ranges::find(kCommands, word, &Command::word);
    return row == std::end(kCommands) ? nullptr : row;
}

const MessageCommand& MessageCommandOf(int code) {
    return FirstOf([code](const MessageCommand& row) { return row.code == code; });
}

const MessageCommand& MessageCommandOf(std::string_view action) {
    return FirstOf([action](const MessageCommand& row) {
        return !row.action.empty() && EqualNoCase(row.action, action);
    });
}

}  // namespace quorbel
