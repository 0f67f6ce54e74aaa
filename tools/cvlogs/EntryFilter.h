#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "syslib/LogLevel.h"
#include "tools/cvlogs/LogChoice.h"

namespace quorbel {

/// Which entries of a log are wanted. What is left empty restricts nothing.
struct EntryChoice {
    LogChoice log;
    LogLevel level = LogLevel::None;
    bool exactLevel = false;              ///< else also the levels above it
    std::string grep;                     ///< a regular expression, see WantedEntries
    std::string timePattern;              ///< SQL's LIKE on the time as it is printed
    std::vector<std::string> subModules;  ///< "" is the module itself
    std::optional<std::int64_t> since;    ///< seconds since the epoch
    std::optional<std::int64_t> until;    ///< the last second that is wanted
    bool follow = false;
};

/// The entries of a log that pass a choice, in the order they were written in.
class WantedEntries {
public:
    /// The expression is looked for in messages; for a database, one with a "%" is a pattern of SQL's LIKE
    /// for the whole message. Throws as OpenLog does.
    explicit WantedEntries(const EntryChoice& choice);

    /// As LogSource::Next.
    bool Next(LogEntry& entry);

private:
    bool Passes(const LogEntry& entry) const;

    const EntryChoice choice_;
    std::optional<Pattern> pattern_;
    std::optional<Pattern> levels_;  // finds entries that may be of a wanted level
    std::unique_ptr<LogSource> source_;
};

}  // namespace quorbel
