#pragma once

#include <string>
#include <vector>

#include "syslib/IniReaderWriter.h"
#include "syslib/LogLevel.h"
#include "syslib/LogWriters.h"

namespace quorbel {

/// Makes the site's log_dir the place of log files that no filePath names, as the system's programs do. Gives
/// why its file "dir" cannot be read, else nothing; the place is then "logs" beside the configuration.
std::string UseLogDirectory(const std::string& configDirectory);

/// How a module logs.
struct ModuleLog {
    std::string module;
    std::string writer;  ///< the word in the file
    LogLevel level;      ///< entries below it are not written
    WriterDescription destination;
};

/// A site's `cvlogs.ini` as its programs find it. Reads the file once and changes nothing: where a program
/// would add a section, a look-up fails.
class LogConfig {
public:
    /// Throws std::runtime_error when there is no file or it cannot be read.
    explicit LogConfig(std::string configDirectory);

    const std::string& Path() const { return path_; }
    /// The lines, to be read only.
    IniReaderWriter& Lines() { return ini_; }

    /// The sections that stand for a module, and "common", whose writer modules may share; in file order.
    std::vector<std::string> Modules();
    /// Throws std::runtime_error for a module without a section. Case does not matter.
    ModuleLog Find(const std::string& module);

private:
    LogSettings SharedSettings();

    const std::string directory_;
    const std::string path_;
    IniReaderWriter ini_;
};

}  // namespace quorbel
