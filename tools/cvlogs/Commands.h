#pragma once

#include <string>

#include "syslib/LogLevel.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/cvlogs/EntryOutput.h"

namespace quorbel {

// What the command line chose for each command, and the commands themselves. They print, and throw what they
// cannot do; UsageError where the options make no sense together.

/// Which entries of which module are wanted, and how they are shown.
struct EntryChoice {
    DatabaseChoice database;
    std::string module;
    LogLevel level = LogLevel::None;
    LogFilter filter;
    bool asJson = false;
    bool asTsv = false;
};
void QueryEntries(const EntryChoice& choice);
void CountEntries(const EntryChoice& choice);

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
