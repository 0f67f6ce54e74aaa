#pragma once

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "process/AdministrationCommands.h"
#include "process/CommandLines.h"
#include "util/StringRoutines.h"

namespace quorbel {

/// The lines of each object of the server's configuration, in the order in which they are posted. To add a
/// line to a command, add a row where it belongs. Lines that the server knows but no request fills stand with
/// `Nothing`.
namespace administration_lines {

struct Source {
    const AdministrationRequest& request;
    std::size_t member;

    const AdministrationParameters& parameters() const { return *request.parameters; }
    const DepartmentInfo& department() const { return *request.department; }
    const UserInfo& user() const { return *request.user; }
    const UserGroupInfo& userGroup() const { return *request.userGroup; }
    const ScheduleInfo& schedule() const { return *request.schedule; }
};
using Line = CommandLine<Source>;

// A line's value by the field that it comes from.
template <auto Field>
std::string Parameter(const Source& s) {
    return s.parameters().*Field;
}
template <auto Field>
std::string Department(const Source& s) {
    return s.department().*Field;
}
template <auto Field>
std::string User(const Source& s) {
    return s.user().*Field;
}
template <auto Field>
std::string UserGroup(const Source& s) {
    return s.userGroup().*Field;
}
template <auto Field>
std::string Schedule(const Source& s) {
    return s.schedule().*Field;
}
/// A flag line of groups and memberships: only a flag of exactly 1 counts.
template <auto Flag>
std::string YesWhen(const Source& s) {
    return s.parameters().*Flag == 1 ? "YES" : "";
}

inline std::string Nothing(const Source&) {
    return {};
}

inline std::string OrDefault(const std::string& text, const char* otherwise) {
    return text.empty() ? otherwise : text;
}

inline std::string OtherValue(const Source& s, std::string_view name) {
    for (const auto& [key, value] : s.parameters().otherValues) {
        if (key == name) return value;
    }
    return {};
}

inline constexpr Line kCommonLines[] = {
    {"cmd", [](const Source&) { return std::string("Cli"); }},
    {"subcmd", Parameter<&AdministrationParameters::command>},
    {"modid", [](const Source&) { return std::string("cli"); }},
    {"adminusername", [](const Source& s) { return std::string(s.request.admin->name); }},
    {"adminpassword", [](const Source& s) { return std::string(s.request.admin->password); }},
};

inline constexpr Line kGroupLines[] = {
    {"groupname", Parameter<&AdministrationParameters::objectName>},
    {"grouptype", Parameter<&AdministrationParameters::groupType>},
    {"department", Parameter<&AdministrationParameters::department>},
    {"description", Parameter<&AdministrationParameters::description>},
    {"newname", Parameter<&AdministrationParameters::newName>},
    {"topic", Parameter<&AdministrationParameters::topic>},
    {"enableownersettings", YesWhen<&AdministrationParameters::enableOwnerSettings>},
    {"username", Parameter<&AdministrationParameters::user>},
    {"alertowner", YesWhen<&AdministrationParameters::alertOwner>},
    {"limitaccess", YesWhen<&AdministrationParameters::limitAccess>},
    {"isrecipusergrp", YesWhen<&AdministrationParameters::recipientUserGroup>},
    {"disable", YesWhen<&AdministrationParameters::disable>},
};

inline bool IsVoice(const Source& s) {
    return EqualNoCase(s.parameters().carrier, "Voice");
}

inline constexpr Line kReceiverLines[] = {
    {"rcv_name", Parameter<&AdministrationParameters::receiver>},
    {"rcv_type", Parameter<&AdministrationParameters::receiverType>},
    {"department", Parameter<&AdministrationParameters::department>},
    {"description", Parameter<&AdministrationParameters::description>},
    {"carrier", Parameter<&AdministrationParameters::carrier>},
    {"pin", Parameter<&AdministrationParameters::pin>},
    {"backupcarrier", Parameter<&AdministrationParameters::backupCarrier>},
    {"backuppin", Parameter<&AdministrationParameters::backupPin>},
    {"voice", [](const Source& s) { return IsVoice(s) ? OrDefault(s.parameters().voiceEnable, "ON") : ""; }},
    {"voicenumber", [](const Source& s) { return IsVoice(s) ? s.parameters().voiceNumber : ""; }},
    {"firstname", Parameter<&AdministrationParameters::firstName>},
    {"lastname", Parameter<&AdministrationParameters::lastName>},
    {"securitycode", Parameter<&AdministrationParameters::securityCode>},
    // The server takes a receiver without a status for a broken one, so there always is one.
    {"devicestatus", [](const Source& s) { return OrDefault(s.parameters().deviceStatus, "1"); }},
    {"forwardto", Parameter<&AdministrationParameters::forwardTo>},
    {"email", Parameter<&AdministrationParameters::receiverEmail>},
    {"emailcc", Parameter<&AdministrationParameters::emailCc>},
    {"emailfailover", Parameter<&AdministrationParameters::emailFailover>},
    {"timezone", Parameter<&AdministrationParameters::receiverTimeZone>},
    {"acctname", Parameter<&AdministrationParameters::accountName>},
    {"acctpassword", Parameter<&AdministrationParameters::accountPassword>},
    {"acctmodrece", Parameter<&AdministrationParameters::canUpdateReceiver>},
    {"acctmodschd", Parameter<&AdministrationParameters::canUpdateSchedule>},
    {"keepalpha", Parameter<&AdministrationParameters::keepAlpha>},
};

inline constexpr Line kDepartmentLines[] = {
    {"name", Department<&DepartmentInfo::name>},
    {"desp", Department<&DepartmentInfo::description>},
    {"newname", Department<&DepartmentInfo::newName>},
};

inline std::string IfSql(const Source& s, const char* text) {
    return EqualNoCase(s.user().authentication, "sql") ? text : "";
}
inline std::string IfNt(const Source& s, const char* text) {
    return EqualNoCase(s.user().authentication, "nt") ? text : "";
}

inline constexpr Line kUserLines[] = {
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
    {.name = "gui", .flag = [](const Source& s) { return s.user().gui; }},
    {.name = "result2email", .flag = [](const Source& s) { return s.user().resultToEmail; }},
    {"authen", User<&UserInfo::authentication>},
    {"netiqusername", [](const Source& s) { return IfSql(s, s.user().linkUserName); }},
    {"netiqpassword", [](const Source& s) { return IfSql(s, s.user().linkPassword); }},
    {"netiqretypepassword", [](const Source& s) { return IfSql(s, s.user().linkPassword); }},
    {"ntusername", [](const Source& s) { return IfNt(s, s.user().ntUserName); }},
    {"ntpassword", [](const Source& s) { return IfNt(s, s.user().ntPassword); }},
    {"ntretypepassword", [](const Source& s) { return IfNt(s, s.user().ntPassword); }},
    {"ntdomain", [](const Source& s) { return IfNt(s, s.user().ntDomain); }},
    {"netiqdbhost", User<&UserInfo::dbHost>},
    {"netiqapphost", User<&UserInfo::appHost>},
};

inline std::string UserGroupName(const Source& s) {
    return s.userGroup().name;
}
inline std::string UserGroupDescription(const Source& s) {
    return s.userGroup().description;
}

inline constexpr Line kUserGroupLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"newname", UserGroup<&UserGroupInfo::newName>},
};

inline constexpr Line kDepartmentPermissionLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"deptname", UserGroup<&UserGroupInfo::departmentName>},
};

inline constexpr Line kPermissionSetLines[] = {
    {"name", UserGroup<&UserGroupInfo::name>},
    {"desp", UserGroup<&UserGroupInfo::description>},
    {"ugpname", UserGroup<&UserGroupInfo::permissionSet>},
};

inline std::string MemberName(const Source& s) {
    const auto& names = s.parameters().memberNames;
    return s.member < names.size() ? names[s.member] : "";
}

inline constexpr Line kMembershipLines[] = {
    {"name", Nothing},
    {"type", Nothing},
    {"department", Nothing},
    {"grp_name", Parameter<&AdministrationParameters::objectName>},
    {"all", YesWhen<&AdministrationParameters::allMembers>},
    {"mtype", Parameter<&AdministrationParameters::memberKind>},
    {"mname", MemberName},
};

inline constexpr Line kScheduleLines[] = {
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
inline int Number(const std::string& text) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

inline constexpr Line kTimeZoneLines[] = {
    {.name = "offset", .number = [](const Source& s) { return Number(OtherValue(s, "offset")); }},
};

inline constexpr const char* kEnablingNames[] = {"name", "enable", "membername"};
inline constexpr const char* kTimeZoneNames[] = {"name", "desp"};
inline constexpr const char* kActionNames[] = {"name",          "desp",     "cmdline",      "type",
                                               "ivr",           "smtp",     "remote",       "responsetext",
                                               "odbc",          "dbsource", "dbusername",   "dbuserpwd",
                                               "dbquerystring", "accttype", "acctusername", "acctpassword"};
inline constexpr const char* kMessengerNames[] = {
    "name",   "desp",     "type",        "interval", "queuename", "queuesize",  "idle",
    "device", "initcmd1", "initstrings", "dialcmd",  "hosturl",   "databits",   "stopbits",
    "parity", "baud",     "port",        "password", "smscid",    "flowcontrol"};
inline constexpr const char* kCarrierNames[] = {
    "name",  "desp",   "type",    "maxmsglen", "maxcomblen", "truncate",   "split",
    "retry", "bkcarr", "bkcarr2", "disable",   "queuename",  "pintemplate"};

}  // namespace administration_lines

}  // namespace quorbel
