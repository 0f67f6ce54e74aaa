#pragma once

#include <ctime>
#include <string>

namespace quorbel {

/// Gives the seconds used: `seconds`, or the current time for 0. Fills `text`, when given, with their local
/// time, month first: "02/01/2024 09:05:03".
std::time_t FormatEventTime(std::time_t seconds, std::string* text = nullptr);

}  // namespace quorbel
