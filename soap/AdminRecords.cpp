#include "soap/AdminRecords.h"

using namespace quorbel;

AdminInfo g_tAdminInfo;
DepartmentInfo g_tDept;
UserInfo g_tUser;
UserGroupInfo g_tUserGroup;
ScheduleInfo g_tSchd;
