#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// The SOAP fault document for a fault string. `faultString` is put in as it is: the caller escapes what
/// comes from outside. `hostName` names this machine in the fault actor.
std::string FaultEnvelope(std::string_view faultString, std::string_view hostName);

}  // namespace quorbel
