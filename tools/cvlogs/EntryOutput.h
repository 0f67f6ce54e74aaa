#pragma once

#include <cstdint>
#include <string>

#include "tools/cvlogs/LogEntry.h"

namespace quorbel {

/// How entries are shown: as the lines of a log file, one JSON object a line, or fields between tabs below a
/// line of the columns' names.
enum class EntryFormat { Lines, Json, Tsv };

/// The colour of a level on a terminal; empty for a plain one.
const char* ColourOfLevel(int level);

/// Prints entries, and numbers of entries that are alike.
class EntryPrinter {
public:
    /// With `subModules` the last two formats tell only what stands behind the module's own name.
    EntryPrinter(EntryFormat format, bool subModules) : format_(format), subModules_(subModules) {}

    void Print(const LogEntry& entry);
    void PrintCount(const LogEntry& alike, std::int64_t count);

private:
    struct Column;
    template <class Columns>
    void PrintColumns(const Columns& columns);

    const EntryFormat format_;
    const bool subModules_;
    bool headed_ = false;
};

}  // namespace quorbel
