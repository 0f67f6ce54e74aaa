#include "syslib/LogConfiguration.h"

#include <algorithm>
#include <iterator>
#include <mutex>

#include "syslib/IniReaderWriter.h"
#include "syslib/LogConfigFile.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

// Every key that a writer knows; "[main]" may set them for all modules.
constexpr const char* kSharedKeys[] = {
    "writer",     "level",          "filePath",   "bytesPerFiles", "numFiles",
    "autoAppend", "perProcessFile", "dbfilename", "filename",      "truncate",
};

LogSection DefaultSection(const std::string& module, const std::string& filePath) {
    return {.header = "[" + module + "]",
            .entries = {
                {"writer", "file"},
                {"level", "info"},
                {"filePath", filePath},
                {"bytesPerFiles", "204800"},
                {"numFiles", "20"},
                {"autoAppend", "1"},
                {"perProcessFile", "0"},
            }};
}

}  // namespace

LogSettings ReadLogSettings(IniReaderWriter& ini, const std::string& header,
                            const std::string& defaultFilePath) {
    const auto main = ini.FindSection("[main]");
    const auto section = ini.FindSection(header);
    const auto valueOr = [&](const char* key, const char* otherwise) -> std::string {
        const std::string* own = ini.FindKey(section, key);
        const std::string* value = own != nullptr ? own : ini.FindKey(main, key);
        return value != nullptr ? *value : otherwise;
    };

    LogSettings settings;
    settings.writer = valueOr("writer", "file");
    settings.level = ParseEventLevel(valueOr("level", "info"), UnknownLevel::Warn);
    for (const char* key : kSharedKeys) {
        const std::string* shared = ini.FindKey(main, key);
        if (shared != nullptr && ini.FindKey(section, key) == nullptr)
            settings.properties.emplace_back(key, *shared);
    }
    if (valueOr("filePath", "").empty()) settings.properties.emplace_back("filePath", defaultFilePath);
    for (const IniLine* line : ini.Entries(section))
        settings.properties.emplace_back(line->text, line->value);
    return settings;
}

bool IsLogKey(std::string_view key) {
    return std::any_of(std::begin(kSharedKeys), std::end(kSharedKeys),
                       [&](const char* known) { return EqualNoCase(key, known); });
}

std::optional<LogSettings> LoadLogSettings(const std::string& path, const std::string& module,
                                           const std::string& defaultFilePath) {
    // One thread at a time: closing the file drops every lock that the process holds on it. Never deleted,
    // for logs that are created while static objects are destroyed.
    static auto* const oneAtATime = new std::mutex;
    const std::lock_guard guard(*oneAtATime);

    IniReaderWriter ini(path, /*lock=*/true, /*retry=*/false);
    if (!LoadLogConfig(ini)) return std::nullopt;
    const LogSection section = DefaultSection(module, defaultFilePath);
    if (ini.FindSection(section.header) == ini.NoSection() && !AddLogSection(ini, path, section)) {
        return std::nullopt;
    }
    return ReadLogSettings(ini, section.header, defaultFilePath);
}

}  // namespace quorbel
