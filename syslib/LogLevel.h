#pragma once

#include <string_view>

namespace quorbel {

/// How important a log entry is; also the threshold below which a module writes nothing.
/// The numbers stand in log databases and are what operators compare.
enum class LogLevel : unsigned { None, Trace, Debug, Info, Warn, Error, Critical, Fatal };

/// What a text that names no level means. In a configuration it must not silence the log, so it is Warn
/// there; a filter takes None for "no such level".
enum class UnknownLevel { Warn, None };

/// Parses a level's name in any case, with the short forms operators use ("info", "warning", "criti").
/// "none" names no level here.
LogLevel ParseLogLevel(std::string_view text, UnknownLevel unknown);

/// "INFO"; "NONE" for every number outside the range.
std::string_view LogLevelName(unsigned level);
/// "[INFO]" as it stands in a log line; empty for None and every number outside the range.
std::string_view LogLevelTag(unsigned level);

/// The level that an entry with one of the numeric codes 17, 18 and 19 is written at; Trace for any other.
LogLevel LogLevelOfCode(int code);

}  // namespace quorbel
