#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Prints a line to standard output. On a terminal, control characters in it are made visible: they come from
/// log entries, and with them from anyone who can send a request.
void PrintLine(std::string_view line);
/// The same for a line of fields with a tab between any two.
void PrintFields(const std::vector<std::string>& fields);

/// Makes sure that everything printed has arrived; throws std::runtime_error when it has not.
void FlushOutput();

}  // namespace quorbel
