#pragma once

#include <string>

#include "syslib/EventLevel.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/cvlogs/EntryOutput.h"

class CVDBiResultSet;

namespace quorbel {

/// Which entries of which module are wanted, and how they are shown: what queries and counts have in common.
struct EntryChoice {
    DatabaseChoice database;
    std::string module;
    EventLevel level = EventLevel::None;
    std::string messagePattern;
    std::string timePattern;
    EntryFormat format = EntryFormat::Lines;
};

/// Adds the options for all of it.
void AddEntryOptions(CLI::App& command, EntryChoice& choice, const std::string& levelHelp);

/// Opens the database and makes sure that it has the module. Throws with the reason.
OpenDatabase OpenFor(const EntryChoice& choice);

/// Prints the rows as chosen; throws when there are none.
void PrintChosen(const CVDBiResultSet& rows, const EntryChoice& choice, const EntryToLine& toLine);

}  // namespace quorbel
