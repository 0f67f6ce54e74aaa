#pragma once

#include "process/TranslationRecords.h"
#include "soap/AdminRecords.h"
#include "soap/RequestRecord.h"

namespace quorbel {

// What a parsed request means for the administration of the server. Pure: each gives its record filled anew.

AdminInfo TranslateAdmin(const RequestRecord& record);
DepartmentInfo TranslateDepartment(const RequestRecord& record);
UserInfo TranslateUser(const RequestRecord& record);
/// `methodCode` tells which element names the granted permissions are known by.
UserGroupInfo TranslateUserGroup(const RequestRecord& record, int methodCode);
AdministrationParameters TranslateAdministration(const RequestRecord& record);

}  // namespace quorbel
