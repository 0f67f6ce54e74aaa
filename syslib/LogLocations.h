#pragma once

#include <string>

namespace quorbel {

/// The path of the logging configuration in a configuration directory.
std::string LogConfigPath(const std::string& configDirectory);

/// "soap_log.txt" for "SOAP": lower case, blanks and slashes as "_".
std::string LogFileName(const std::string& module);

/// Where a log file lies that no configuration places: in the default log directory, or in "logs" beside the
/// configuration directory when none was set.
std::string DefaultLogPath(const std::string& fileName, const std::string& configDirectory);

/// Sets the default log directory of this process; empty stands for bare file names.
void SetDefaultLogLocation(const std::string& directory);

}  // namespace quorbel
