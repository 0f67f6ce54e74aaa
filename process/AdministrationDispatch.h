#pragma once

#include <string_view>

#include "process/AdministrationCommands.h"

namespace quorbel {

/// Why an administration request may not be posted, as the text of a fault "2004"; null when it may. `method`
/// is the SOAP method's name; messaging methods pass with any valid command word.
const char* RefusalOf(const AdministrationRequest& request, std::string_view method);

}  // namespace quorbel
