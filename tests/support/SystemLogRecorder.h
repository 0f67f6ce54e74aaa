#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// One entry as it would have reached the operating system's log.
struct SystemLogEntry {
    std::string identity;
    int option;
    int facility;
    int priority;
    std::string text;
};

/// The entries since the last call. A test program that links `system_log_recorder` writes none to the real
/// log: openlog, syslog and closelog are replaced at link time.
std::vector<SystemLogEntry> TakeSystemLog();
/// Their texts only.
std::vector<std::string> TakeSystemLogTexts();

}  // namespace quorbel
