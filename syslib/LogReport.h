#pragma once

#include <string>

namespace quorbel {

/// Tells the system log about a failure of the event log itself, listed under `identity` (a module name as a
/// rule) and naming the operation `source`. The text arrives letter for letter.
void ReportLogFailure(const char* source, const std::string& identity, const std::string& text);

/// The same for the exception being handled, to be called inside a catch block: reports its own text, or
/// `unknown` when it carries none. A thread's forced end is not an error and goes on.
void ReportCaughtException(const char* source, const std::string& identity, const char* unknown);

}  // namespace quorbel
