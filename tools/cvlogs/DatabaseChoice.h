#pragma once

#include <memory>
#include <string>

#include "syslib/CVLogDBProcessorInterface.h"

namespace quorbel {

/// The log database that the command line names: itself, or by the configuration that names it.
struct DatabaseChoice {
    std::string file;
    std::string configDirectory;
};

using OpenDatabase = std::unique_ptr<CVLogDBProcessorInterface>;

// All of these throw std::runtime_error with the reason, and create nothing.

/// The path of the database that holds the entries of `module`.
std::string DatabaseOf(const DatabaseChoice& choice, const std::string& module);
/// The path of the one database that the configuration names; a failure when it names several.
std::string OnlyDatabase(const DatabaseChoice& choice);

/// The database; when a module is named, one that has it.
OpenDatabase OpenForReading(const std::string& path, const std::string& module = {});
OpenDatabase OpenForChanging(const std::string& path, const std::string& module = {});

}  // namespace quorbel
