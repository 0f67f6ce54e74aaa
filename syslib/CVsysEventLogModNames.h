#pragma once

#include <cstddef>
#include <iterator>

/// The modules of the system. A module's index is its number in calls and in log databases: add at the end
/// only.
inline constexpr const char* CVsysEventLogModNames[] = {
    "Backup Service",
    "CLI",
    "Messenger",
    "LDAP",
    "Main",
    "Errors",
    "Debug",
    "Confirmations",
    "Messages",
    "CorAdm",
    "File System Interface",
    "System Attendant",
    "Report Writer",
    "Scheduler",
    "Sdb2Rdb",
    "Email Gateway",
    "SNMP Service",
    "SNPP Gateway",
    "SOAP",
    "SOAPGUI",
    "Synchronizer",
    "TAP Gateway",
    "ResponseActionLog",
    "SDB Converter",
    "RDB Converter",
    "XMPP Gateway",
    "HNP Manager",
};
static_assert(std::size(CVsysEventLogModNames) == 27);

namespace quorbel {

/// The front end's own entry in the table.
inline constexpr std::size_t kSoapModule = 18;

}  // namespace quorbel
