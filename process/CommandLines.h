#pragma once

#include <span>
#include <string>

#include "process/CommandParameters.h"

namespace quorbel {

/// One line of a command whose name is fixed and whose value comes from the record `Source`. A row sets one
/// of the three; a line with an empty text or a flag other than 1 is left out, a number is always there.
template <typename Source>
struct CommandLine {
    const char* name;
    std::string (*text)(const Source&) = nullptr;
    int (*flag)(const Source&) = nullptr;
    int (*number)(const Source&) = nullptr;
};

/// Adds a table's lines in its order.
template <typename Source>
void AddLines(CommandParameters& command, std::span<const CommandLine<Source>> lines, const Source& source) {
    for (const auto& line : lines) {
        if (line.text != nullptr) command.AddParameter(line.name, line.text(source));
        if (line.flag != nullptr) command.AddFlag(line.name, line.flag(source));
        if (line.number != nullptr) command.AddNumber(line.name, line.number(source));
    }
}

}  // namespace quorbel
