#pragma once

#include <cstddef>

#include "process/CommandParameters.h"
#include "process/TranslationRecords.h"
#include "soap/AdminRecords.h"

namespace quorbel {

/// What an administration command is built from; all records are borrowed.
struct AdministrationRequest {
    const AdministrationParameters* parameters;
    const AdminInfo* admin;
    const DepartmentInfo* department;
    const UserInfo* user;
    const UserGroupInfo* userGroup;
    const ScheduleInfo* schedule;
};

/// True for the four words that add or remove group members, one command for each member.
bool IsMembershipWord(const std::string& word);

/// The command for one member of the request (0 for requests without members). A word that no object knows
/// gives the common lines alone.
CommandParameters BuildAdministrationCommand(const AdministrationRequest& request, std::size_t member);

}  // namespace quorbel
