#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// One entry of a log, wherever it is stored. The views point into a text of the source's.
struct LogEntry {
    std::string_view text{};     ///< the whole entry as a log file holds it, without line ends at its end
    std::string_view time{};     ///< "02/01/2024 09:05:03"; empty for text without one
    std::string_view module{};   ///< with its sub-module: "SOAP.Send"; empty where the log does not tell
    std::string_view message{};  ///< as stored; a file's without line ends at its end
    int level = 0;               ///< a LogLevel's number
    std::int64_t timestamp = 0;  ///< seconds since the epoch
    // What only a database tells.
    std::optional<std::int64_t> id{};
    int line = -1;
    std::string_view sourceFile{};
};

/// "Send" for "SOAP.Send", empty for a module itself.
inline std::string_view SubModuleOf(std::string_view module) {
    const std::size_t dot = module.find('.');
    return dot == module.npos ? std::string_view() : module.substr(dot + 1);
}

/// A log that is read from its oldest entry on. Shows its progress when that takes long.
class LogSource {
public:
    virtual ~LogSource() = default;

    /// The next entry, whose views hold until the next call. False when there is none at present: entries
    /// that are written later come with later calls. Throws std::runtime_error when the log cannot be read.
    virtual bool Next(LogEntry& entry) = 0;
};

/// Reads one entry, less its timestamp, from the text of a log file, less its line ends.
LogEntry ParseLogEntry(std::string_view text);
/// Whether the text begins as an entry of a log file does: with a date and a time.
bool BeginsLogEntry(std::string_view text);

}  // namespace quorbel
