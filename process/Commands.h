#pragma once

#include <cstddef>
#include <string_view>

#include "process/CommandParameters.h"
#include "process/CommandRecords.h"

// The loop over the table of commands: which requests are refused, and the commands of those that are not.

namespace quorbel {

/// Why an administration request may not be posted, as the text of a fault "2004"; null when it may. `method`
/// is the SOAP method's name; messaging methods pass with any valid command word.
const char* RefusalOf(const AdministrationRequest& request, std::string_view method);

/// Why a message may not be posted, as above: nobody to send it to, or a custom field named like a line of the
/// command itself.
const char* RefusalOf(const MessagingParameters& parameters);

/// True for the four words that add or remove group members, one command for each member.
bool IsMembershipWord(std::string_view word);

/// The command for one member of the request (0 for requests without members). A word that no row knows gives
/// the common lines alone.
CommandParameters BuildAdministrationCommand(const AdministrationRequest& request, std::size_t member);

/// True when the request's code builds one command that names no recipient list: a query, a confirmation, a
/// rejection or a quick send. Any other code is a standard send, one command for each recipient.
bool IsSingleCommand(int commandCode);

/// The command that sends a message to one recipient, or asks about or answers a message.
CommandParameters BuildMessageCommand(const MessagingParameters& message, std::string_view recipient);

}  // namespace quorbel
