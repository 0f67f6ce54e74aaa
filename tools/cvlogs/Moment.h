#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace quorbel {

/// Reads a moment as an operator gives it, in seconds since the epoch; empty when the text is none.
///
/// Local times: "2024-02-01", "2024-02-01 09:05", "2024-02-01 09:05:03" (also with a "T", a fraction, and an
/// offset from UTC behind it), the same in the order of the logs ("02/01/2024 09:05:03"), "09:05" and
/// "09:05:03" of today, "today" and "yesterday" at midnight. Besides "now", "@1706778303", and "90s",
/// "10 min ago", "2 hours ago", "7d" before `now`.
std::optional<std::int64_t> ParseMoment(const std::string& text, std::time_t now);

}  // namespace quorbel
