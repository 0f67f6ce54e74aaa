#pragma once

#include <memory>
#include <string>

#include "syslib/GuardedWriter.h"
#include "syslib/LogConfiguration.h"

namespace quorbel {

/// Whose log a writer is made for.
struct LogOwner {
    std::string module;
    std::string configDirectory;
    /// The logger's name; empty stands for the module's.
    std::string name;
};

/// Makes the writer that the settings choose and gives it every key. Null for an unknown writer, and when the
/// shared writer of "[common]" is chosen but cannot be made. A writer that is there may still be not ready.
std::shared_ptr<GuardedWriter> CreateLogWriter(const LogSettings& settings, const LogOwner& owner);

}  // namespace quorbel
