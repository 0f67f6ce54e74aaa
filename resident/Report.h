#pragma once

#include <string>

#include "resident/Scoreboard.h"

namespace quorbel {

/// The service, as it names itself in the system log and on standard error.
inline constexpr char kServiceName[] = "quorbel-soapd";

// The service's own messages, each to the system log and as a line to standard error, unless systemd's journal reads both.

void ReportError(const std::string& text);
void ReportInfo(const std::string& text);

/// "signal 11 (Segmentation fault)".
std::string DescribeSignal(int signal);

/// What a worker was doing that is gone: "in request 7 (POST from 10.0.0.1, id abc, begun 3 s ago)". What a client
/// sent is told as plain ASCII.
std::string DescribeWork(WorkerState state, const RequestNote& note);

}  // namespace quorbel
