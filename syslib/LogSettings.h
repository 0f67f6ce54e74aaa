#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "syslib/LogLevel.h"

class IniReaderWriter;

namespace quorbel {

/// What `cvlogs.ini` says about one module.
struct LogSettings {
    std::string writer;
    LogLevel level = LogLevel::Info;
    /// Keys and values for the writer, in the order in which it is to be given them.
    std::vector<std::pair<std::string, std::string>> properties;
};

/// Reads the section of `module` ("SOAP", without brackets) from the file at `path`; empty when the file is
/// there but cannot be read, or stays locked for ten seconds.
///
/// A key that the section lacks comes from "[main]", else from the built-in defaults; `defaultFilePath` is
/// the one of `filePath`. A missing section is added to the file with the built-in defaults, behind "[main]"
/// and everything else. Reading, adding and writing happen under one lock on the file itself, so that programs
/// that start at the same time lose nothing of one another; a full disk leaves the file as it was. Where the
/// file cannot be written the defaults hold without it. docs/logging.md describes the file.
std::optional<LogSettings> LoadLogSettings(const std::string& path, const std::string& module,
                                           const std::string& defaultFilePath);

/// The same from a file that is loaded, for the section with the header "[SOAP]"; adds nothing.
LogSettings ReadLogSettings(IniReaderWriter& ini, const std::string& header,
                            const std::string& defaultFilePath);

/// Loads `ini`, which must lock but not retry, waiting up to ten seconds while another program writes the
/// file. A missing file counts as an empty one. False when the file is there but cannot be read.
bool LoadLogConfig(IniReaderWriter& ini);

/// Whether the event log or one of its writers knows the key.
bool IsLogKey(std::string_view key);

}  // namespace quorbel
