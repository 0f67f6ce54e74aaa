#include "tools/cvlogs/LevelOption.h"

#include <CLI/CLI.hpp>

namespace quorbel {

CLI::Option* AddLevelOption(CLI::App& command, EventLevel& level, const std::string& description) {
    const auto parse = [&level](const std::string& text) {
        level = ParseEventLevel(text, UnknownLevel::None);
        if (level == EventLevel::None)
            throw CLI::ValidationError("--level", "\"" + text + "\" names no level");
    };
    return command
        .add_option_function<std::string>(
            "--level", parse, description + ": trace, debug, info, warn, error, critical or fatal")
        ->type_name("LEVEL");
}

}  // namespace quorbel
