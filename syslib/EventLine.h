#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace quorbel {

/// One entry as it stands in a log file, without a line end of its own:
/// "02/01/2024 09:05:03 SOAP [INFO] message". An empty module is left out with its blank; a level without a
/// tag leaves its blank. `time` is in seconds, 0 means now. docs/log-files.md describes the files.
std::string EventLine(std::string_view module, unsigned level, std::string_view message, std::time_t time);

}  // namespace quorbel
