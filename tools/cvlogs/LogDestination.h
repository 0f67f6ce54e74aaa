#pragma once

#include <string>

#include "syslib/LogArchive.h"
#include "syslib/LogConfiguration.h"

namespace quorbel {

/// Where the entries of a module end up, and whether they do for a program of this user that is started in
/// this directory.
struct LogDestination {
    enum class Kind { File, Database, ErrorStream, Unknown };

    Kind kind = Kind::Unknown;
    std::string path{};           ///< of the file or database
    ArchiveRule archive{};        ///< a file's
    bool perProcessFile = false;  ///< entries go to a file of the module's name beside `path`
    std::string notReady{};       ///< why no entry is written; empty when they are
};

/// What the writer that the settings choose would make of them. Only looks: the writer itself creates files
/// and removes dead lock files as soon as it is given its settings.
LogDestination FindLogDestination(const LogSettings& settings);

/// Whether there is a writer of that name. "common" is none, but a way to choose one.
bool IsLogWriter(const std::string& name);

}  // namespace quorbel
