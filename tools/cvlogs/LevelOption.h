#pragma once

#include <string>

#include "syslib/EventLevel.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quorbel {

/// Adds "--level LEVEL"; refuses a text that names no level.
CLI::Option* AddLevelOption(CLI::App& command, EventLevel& level, const std::string& description);

}  // namespace quorbel
