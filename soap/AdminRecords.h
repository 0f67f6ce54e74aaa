#pragma once

namespace quorbel {

// The fixed-width records of an administration request. Request translation writes them, with CopyText, from
// the request record; dispatch and the administration command process read them. Values are cut silently at
// the width less one. Flags are 1 or 0.

struct AdminInfo {
    char name[101];
    char password[101];
};

struct DepartmentInfo {
    char name[101];
    char description[101];
    char newName[101];  ///< no element fills it
};

struct UserInfo {
    char userName[101];
    char newUserName[101];
    char password[101];
    char description[101];
    char userGroup[101];
    char ip[51];
    char email[101];
    int gui;
    int cli;
    int resultToEmail;
    char accessCode[20];
    char timeZone[50];     ///< 49 characters
    char accountType[52];  ///< no element fills it
    char linkUserName[101];
    char linkPassword[101];
    char dbHost[101];
    char appHost[101];  ///< no element fills it
    char ntUserName[101];
    char ntPassword[101];
    char ntDomain[101];
    char authentication[10];  ///< 9 characters
};

/// A permission that a request grants, by the name of its element.
struct PermissionEntry {
    char name[30];
};

struct UserGroupInfo {
    char name[101];
    char newName[101];  ///< no element fills it
    char description[101];
    char departmentName[101];
    char permissionSet[101];
    int permissionCount;
    PermissionEntry permissions[36];  ///< one for each permission slot of a request
};

/// The texts of a schedule command. No SOAP method fills them; programs that link the command process do.
struct ScheduleInfo {
    char name[101];
    char scheduleName[101];
    char scheduleType[51];
    char startHour[12];
    char startMinute[12];
    char endHour[12];
    char endMinute[12];
    char startDate[51];
    char endDate[51];
    char recurrences[12];
    char weekdays[51];
    char every[12];
    char dayOfMonth[12];
    char weekOfMonth[12];
    char dayOfWeek[12];
    char forDays[12];
    char memberName[101];
    char memberType[51];
    char delay[12];
};

}  // namespace quorbel

extern quorbel::AdminInfo g_tAdminInfo;
extern quorbel::DepartmentInfo g_tDept;
extern quorbel::UserInfo g_tUser;
extern quorbel::UserGroupInfo g_tUserGroup;
extern quorbel::ScheduleInfo g_tSchd;
