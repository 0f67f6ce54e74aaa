#pragma once

#include <cstdint>
#include <string>

#include "syslib/LogLevel.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/cvlogs/Deliveries.h"
#include "tools/cvlogs/EntryFilter.h"

namespace quorbel {

// What the command line chose for each command, and the commands themselves. They print, and throw what they
// cannot do; UsageError where the options make no sense together.

struct PrintChoice {
    bool asJson = false;
    bool asTsv = false;
    bool noPager = false;
    std::string colour = "auto";  ///< or "always" or "never"
};

/// Colours and pager as chosen; a pager only when there may be one.
void PreparePrinting(const PrintChoice& choice, bool pager);

struct QueryChoice : EntryChoice {
    PrintChoice print;
    std::int64_t last = 0;  ///< only so many of the last entries; 0 is all
    bool newest = false;
    bool byModule = false;
    bool byLevel = false;
    std::int64_t limit = 0;  ///< 0 is none
    std::int64_t offset = 0;
};
/// With `follow` it ends by a signal only.
void QueryEntries(const QueryChoice& choice);
void CountEntries(const QueryChoice& choice);

struct DeliveriesChoice {
    DeliveryChoice wanted;
    bool summary = false;
    std::string html;  ///< the file that a report goes to; empty for a table on standard output
    PrintChoice print;
};
void ShowDeliveries(const DeliveriesChoice& choice);

void PrintModules(const DatabaseChoice& choice);
void TruncateDatabase(const DatabaseChoice& choice);
void DropModule(const DatabaseChoice& choice, const std::string& module);

void CheckConfiguration(const std::string& configDirectory);

struct WriteChoice {
    std::string configDirectory;
    std::string module;
    LogLevel level = LogLevel::None;
    std::string text;
    bool byWorker = false;
};
void WriteEntry(const WriteChoice& choice);

}  // namespace quorbel
