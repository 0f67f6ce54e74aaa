#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace quorbel {

/// Reads a moment as an operator gives it, in seconds since the epoch; empty when the text is none.
///
/// "2024-02-01", "2024-02-01 09:05" and "2024-02-01 09:05:03" (also with a "T"), the same in the order of the
/// logs ("02/01/2024 09:05:03"), all in local time; "@1706778303"; and "90s", "15m", "2h", "7d" before `now`.
std::optional<std::int64_t> ParseMoment(const std::string& text, std::time_t now);

}  // namespace quorbel
