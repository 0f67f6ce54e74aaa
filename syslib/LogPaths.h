#pragma once

#include <string>

namespace quorbel {

/// The path of the logging configuration in a configuration directory.
std::string LogConfigPath(const std::string& configDirectory);

/// The same file after the process has changed its directory; the path itself when its directory is unknown.
std::string AbsolutePath(const std::string& path);

/// "soap_log.txt" for "SOAP": lower case, blanks and slashes as "_".
std::string LogFileName(const std::string& module);

/// Where a log file lies that no configuration places: in the default log directory, or in "logs" beside the
/// configuration directory when none was set.
std::string DefaultLogPath(const std::string& fileName, const std::string& configDirectory);

/// Sets the default log directory of this process; empty stands for bare file names.
void SetDefaultLogPath(const std::string& directory);

/// The directory part of a log's path; "./" when it has none.
std::string LogDirectoryOf(const std::string& path);

/// Why no log can be written at `path`: its directory must take new files (lock files, archives and journals
/// lie beside the log), and what is there already must be a file to be read and written. Empty when it can.
std::string WhyNotWritable(const std::string& path);
/// Why the file cannot be opened for reading and writing; empty when it can, and when there is none.
std::string WhyRefused(const std::string& path);

}  // namespace quorbel
