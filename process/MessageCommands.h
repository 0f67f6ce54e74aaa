#pragma once

#include <string>

#include "process/CommandParameters.h"
#include "process/TranslationRecords.h"

namespace quorbel {

/// True when the request's code builds one command that names no recipient list: a query, a confirmation, a
/// rejection or a quick send. Any other code is a standard send, one command for each recipient.
bool IsSingleCommand(int commandCode);

/// The command of a code for which IsSingleCommand holds.
CommandParameters BuildSingleCommand(const MessagingParameters& parameters);

/// The command that sends a message to one recipient.
CommandParameters BuildSendCommand(const MessagingParameters& parameters, const std::string& recipient);

}  // namespace quorbel
