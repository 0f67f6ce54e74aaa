#pragma once

#include "AdministrationCommands.h"
#include "CommandLines.h"
#include "StringRoutines.h"

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

inline std::string Nothing(const Source&) {
    return {};
}

/// The value of a flag line of groups and memberships; only a flag of exactly 1 counts.
inline std::string Yes(int flag) {
    return flag == 1 ? "YES" : "";
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
    {"subcmd", [](const Source& s) { return s.parameters().command; }},
    {"modid", [](const Source&) { return std::string("cli"); }},
    {"adminusername", [](const Source& s) { return std::string(s.request.admin->name); }},
    {"adminpassword", [](const Source& s) { return std::string(s.request.admin->password); }},
};

inline constexpr Line kGroupLines[] = {
    {"groupname", [](const Source& s) { return s.parameters().objectName; }},
    {"grouptype", [](const Source& s) { return s.parameters().groupType; }},
    {"department", [](const Source& s) { return s.parameters().department; }},
    {"description", [](const Source& s) { return s.parameters().description; }},
    {"newname", [](const Source& s) { return s.parameters().newName; }},
    {"topic", [](const Source& s) { return s.parameters().topic; }},
    {"enableownersettings", [](const Source& s) { return Yes(s.parameters().enableOwnerSettings); }},
    {"username", [](const Source& s) { return s.parameters().user; }},
    {"alertowner", [](const Source& s) { return Yes(s.parameters().alertOwner); }},
    {"limitaccess", [](const Source& s) { return Yes(s.parameters().limitAccess); }},
    {"isrecipusergrp", [](const Source& s) { return Yes(s.parameters().recipientUserGroup); }},
    {"disable", [](const Source& s) { return Yes(s.parameters().disable); }},
};

inline bool IsVoice(const Source& s) {
    return EqualNoCase(s.parameters().carrier, "Voice");
}

inline constexpr Line kReceiverLines[] = {
    {"rcv_name", [](const Source& s) { return s.parameters().receiver; }},
    {"rcv_type", [](const Source& s) { return s.parameters().receiverType; }},
    {"department", [](const Source& s) { return s.parameters().department; }},
    {"description", [](const Source& s) { return s.parameters().description; }},
    {"carrier", [](const Source& s) { return s.parameters().carrier; }},
    {"pin", [](const Source& s) { return s.parameters().pin; }},
    {"backupcarrier", [](const Source& s) { return s.parameters().backupCarrier; }},
    {"backuppin", [](const Source& s) { return s.parameters().backupPin; }},
    {"voice", [](const Source& s) { return IsVoice(s) ? OrDefault(s.parameters().voiceEnable, "ON") : ""; }},
    {"voicenumber", [](const Source& s) { return IsVoice(s) ? s.parameters().voiceNumber : ""; }},
    {"firstname", [](const Source& s) { return s.parameters().firstName; }},
    {"lastname", [](const Source& s) { return s.parameters().lastName; }},
    {"securitycode", [](const Source& s) { return s.parameters().securityCode; }},
    // The server takes a receiver without a status for a broken one, so there always is one.
    {"devicestatus", [](const Source& s) { return OrDefault(s.parameters().deviceStatus, "1"); }},
    {"forwardto", [](const Source& s) { return s.parameters().forwardTo; }},
    {"email", [](const Source& s) { return s.parameters().receiverEmail; }},
    {"emailcc", [](const Source& s) { return s.parameters().emailCc; }},
    {"emailfailover", [](const Source& s) { return s.parameters().emailFailover; }},
    {"timezone", [](const Source& s) { return s.parameters().receiverTimeZone; }},
    {"acctname", [](const Source& s) { return s.parameters().accountName; }},
    {"acctpassword", [](const Source& s) { return s.parameters().accountPassword; }},
    {"acctmodrece", [](const Source& s) { return s.parameters().canUpdateReceiver; }},
    {"acctmodschd", [](const Source& s) { return s.parameters().canUpdateSchedule; }},
    {"keepalpha", [](const Source& s) { return s.parameters().keepAlpha; }},
};

inline constexpr Line kDepartmentLines[] = {
    {"name", [](const Source& s) { return std::string(s.department().name); }},
    {"desp", [](const Source& s) { return std::string(s.department().description); }},
    {"newname", [](const Source& s) { return std::string(s.department().newName); }},
};

inline std::string IfSql(const Source& s, const char* text) {
    return EqualNoCase(s.user().authentication, "sql") ? text : "";
}
inline std::string IfNt(const Source& s, const char* text) {
    return EqualNoCase(s.user().authentication, "nt") ? text : "";
}

inline constexpr Line kUserLines[] = {
    {"hname", [](const Source& s) { return std::string(s.user().userName); }},
    {"name", [](const Source& s) { return std::string(s.user().userName); }},
    {"newname", [](const Source& s) { return std::string(s.user().newUserName); }},
    {"desp", [](const Source& s) { return std::string(s.user().description); }},
    {"password", [](const Source& s) { return std::string(s.user().password); }},
    {"retypepassword", [](const Source& s) { return std::string(s.user().password); }},
    {"usergroup", [](const Source& s) { return std::string(s.user().userGroup); }},
    {"email", [](const Source& s) { return std::string(s.user().email); }},
    {"timezoneid", [](const Source& s) { return std::string(s.user().timeZone); }},
    {"accesscode", [](const Source& s) { return std::string(s.user().accessCode); }},
    {"accounttype", [](const Source& s) { return std::string(s.user().accountType); }},
    {"ip", [](const Source& s) { return std::string(s.user().ip); }},
    {.name = "gui", .flag = [](const Source& s) { return s.user().gui; }},
    {.name = "result2email", .flag = [](const Source& s) { return s.user().resultToEmail; }},
    {"authen", [](const Source& s) { return std::string(s.user().authentication); }},
    {"netiqusername", [](const Source& s) { return IfSql(s, s.user().linkUserName); }},
    {"netiqpassword", [](const Source& s) { return IfSql(s, s.user().linkPassword); }},
    {"netiqretypepassword", [](const Source& s) { return IfSql(s, s.user().linkPassword); }},
    {"ntusername", [](const Source& s) { return IfNt(s, s.user().ntUserName); }},
    {"ntpassword", [](const Source& s) { return IfNt(s, s.user().ntPassword); }},
    {"ntretypepassword", [](const Source& s) { return IfNt(s, s.user().ntPassword); }},
    {"ntdomain", [](const Source& s) { return IfNt(s, s.user().ntDomain); }},
    {"netiqdbhost", [](const Source& s) { return std::string(s.user().dbHost); }},
    {"netiqapphost", [](const Source& s) { return std::string(s.user().appHost); }},
};

inline std::string UserGroupName(const Source& s) {
    return s.userGroup().name;
}
inline std::string UserGroupDescription(const Source& s) {
    return s.userGroup().description;
}

inline constexpr Line kUserGroupLines[] = {
    {"name", UserGroupName},
    {"desp", UserGroupDescription},
    {"newname", [](const Source& s) { return std::string(s.userGroup().newName); }},
};

inline constexpr Line kDepartmentPermissionLines[] = {
    {"name", UserGroupName},
    {"desp", UserGroupDescription},
    {"deptname", [](const Source& s) { return std::string(s.userGroup().departmentName); }},
};

inline constexpr Line kPermissionSetLines[] = {
    {"name", UserGroupName},
    {"desp", UserGroupDescription},
    {"ugpname", [](const Source& s) { return std::string(s.userGroup().permissionSet); }},
};

inline std::string MemberName(const Source& s) {
    const auto& names = s.parameters().memberNames;
    return s.member < names.size() ? names[s.member] : "";
}

inline constexpr Line kMembershipLines[] = {
    {"name", Nothing},
    {"type", Nothing},
    {"department", Nothing},
    {"grp_name", [](const Source& s) { return s.parameters().objectName; }},
    {"all", [](const Source& s) { return Yes(s.parameters().allMembers); }},
    {"mtype", [](const Source& s) { return s.parameters().memberKind; }},
    {"mname", MemberName},
};

inline constexpr Line kScheduleLines[] = {
    {"name", [](const Source& s) { return std::string(s.schedule().name); }},
    {"schdname", [](const Source& s) { return std::string(s.schedule().scheduleName); }},
    {"schdtype", [](const Source& s) { return std::string(s.schedule().scheduleType); }},
    {"starthr", [](const Source& s) { return std::string(s.schedule().startHour); }},
    {"startmin", [](const Source& s) { return std::string(s.schedule().startMinute); }},
    {"endhr", [](const Source& s) { return std::string(s.schedule().endHour); }},
    {"endmin", [](const Source& s) { return std::string(s.schedule().endMinute); }},
    {"startdate", [](const Source& s) { return std::string(s.schedule().startDate); }},
    {"enddate", [](const Source& s) { return std::string(s.schedule().endDate); }},
    {"recurrences", [](const Source& s) { return std::string(s.schedule().recurrences); }},
    {"weekdays", [](const Source& s) { return std::string(s.schedule().weekdays); }},
    {"every", [](const Source& s) { return std::string(s.schedule().every); }},
    {"dayofmonth", [](const Source& s) { return std::string(s.schedule().dayOfMonth); }},
    {"weekofmonth", [](const Source& s) { return std::string(s.schedule().weekOfMonth); }},
    {"dayofweek", [](const Source& s) { return std::string(s.schedule().dayOfWeek); }},
    {"fordays", [](const Source& s) { return std::string(s.schedule().forDays); }},
    {"membername", [](const Source& s) { return std::string(s.schedule().memberName); }},
    {"membertype", [](const Source& s) { return std::string(s.schedule().memberType); }},
    {"delay", [](const Source& s) { return std::string(s.schedule().delay); }},
};

inline constexpr Line kTimeZoneLines[] = {
    {.name = "offset", .number = [](const Source& s) { return std::atoi(OtherValue(s, "offset").c_str()); }},
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
