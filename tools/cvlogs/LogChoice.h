#pragma once

#include <memory>
#include <string>

#include "tools/cvlogs/LogEntry.h"
#include "tools/cvlogs/Pattern.h"

namespace quorbel {

/// The log that the command line names: itself, or by the module and the configuration that places it.
struct LogChoice {
    std::string file;      ///< of a log file
    std::string database;  ///< of a log database
    std::string configDirectory;
    std::string module;
};

/// What a source may leave out itself; all of it is optional.
struct SourceHints {
    const Pattern* search = nullptr;  ///< see FileSource
    std::string like{};               ///< see DatabaseSource
    bool follow = false;
};

// These throw std::runtime_error with the reason, UsageError when the choice names no log, and create
// nothing.

std::unique_ptr<LogSource> OpenLog(const LogChoice& choice, const SourceHints& hints);
/// Whether the chosen log is a database.
bool IsDatabase(const LogChoice& choice);

}  // namespace quorbel
