#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

// What the programs print to standard output. On a terminal, control characters are made visible: they come
// from log entries, and with them from anyone who can send a request.

/// Prints a line. `colour` is the number of a terminal's colour or style ("31", "1;31"); it is used as
/// UseColours said, none by default.
void PrintLine(std::string_view line, std::string_view colour = {});
/// The same for a line of fields with a tab between any two.
void PrintFields(const std::vector<std::string>& fields);

/// Shows colours from now on.
void UseColours();
/// Lets the lines to come pass through a pager when they go to a terminal: what $PAGER names, else less.
void UsePager();
bool PrintsToTerminal();

/// Makes sure that everything printed has arrived; throws std::runtime_error when it has not.
void FlushOutput();
/// The same, and waits until the reader has left the pager.
void FinishOutput() noexcept;

}  // namespace quorbel
