#pragma once

#include <cstdint>

namespace quorbel {

// One line on standard error that tells how far a long task is, for a person: nothing is shown unless that is
// a terminal, nor in the first second.

/// "300 of 1200 MB read" for the unit "MB". To be called often; it shows itself five times a second.
void ShowProgress(std::int64_t done, std::int64_t total, const char* unit);
/// Takes the line away, if there is one. To be called before anything else is printed.
void HideProgress();

}  // namespace quorbel
