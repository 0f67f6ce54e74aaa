#pragma once

/// How important a log entry is; also the threshold below which a module writes nothing.
/// The numbers stand in log databases and are what operators compare.
enum class EventLevel : unsigned { None, Trace, Debug, Info, Warn, Error, Critical, Fatal };
