#include "syslib/LogSettings.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <mutex>

#include "syslib/CVIniReaderWriterEx.h"
#include "syslib/LogWaits.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using std::chrono::microseconds;

constexpr std::chrono::seconds kLongestWait{10};
// Longer lines would be cut, and the next one would stick to what is left.

// Every key that a writer knows; "[main]" may set them for all modules.
constexpr const char* kSharedKeys[] = {
    "writer",     "level",          "filePath",   "bytesPerFiles", "numFiles",
    "autoAppend", "perProcessFile", "dbfilename", "filename",      "truncate",
};

// A section with its entries as they are to stand in the file; the header includes its brackets.
struct NewSection {
    std::string header;
    std::vector<std::pair<std::string, std::string>> entries;
};

NewSection DefaultSection(const std::string& module, const std::string& filePath) {
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

bool HasSection(IniReaderWriter& ini, const NewSection& section) {
    return ini.FindSection(section.header) != ini.NoSection();
}

void AppendSection(IniReaderWriter& ini, const NewSection& section) {
    ini.section("[main]");
    const auto added = ini.section(section.header);
    for (const auto& [key, value] : section.entries) {
        if (key.size() + value.size() + 2 <= IniReaderWriter::kLongestLine) ini.key(added, key) = value;
    }
}

// Whoever holds the file's lock needs it for the moment it takes to read or write a small file. The pauses
// differ, so that processes that start together do not meet again.
template <class Attempt>
bool TryWhileLocked(IniReaderWriter& ini, Attempt attempt) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + LogWaitLeft(kLongestWait);
    while (!attempt()) {
        const auto now = Clock::now();
        if (!ini.LockIsBusy() || now >= deadline) return false;
        WaitForLog(microseconds(500 + now.time_since_epoch().count() % 4000), "cvlogs.ini");
    }
    return true;
}

bool OpenLocked(CVIniReaderWriterEx& file) {
    const bool open = file.Open() || (file.LastError() == ENOENT && file.CreateAndOpen());
    return open && TryWhileLocked(file, [&] { return file.LockUntilClose(); });
}

// Adds the section to the file, unless another process has just done it; `file` then holds the content. False
// when the file cannot be written.
bool AddToFile(CVIniReaderWriterEx& file, const NewSection& section) {
    if (!OpenLocked(file) || !file.load()) return false;
    if (!HasSection(file, section)) {
        AppendSection(file, section);
        file.save();  // on a full disk the defaults hold without the file
    }
    file.Close();
    return true;
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
    settings.level = ParseLogLevel(valueOr("level", "info"), UnknownLevel::Warn);
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

bool LoadLogConfig(IniReaderWriter& ini) {
    return TryWhileLocked(ini, [&] { return ini.load(); }) || ini.LastError() == ENOENT;
}

std::optional<LogSettings> LoadLogSettings(const std::string& path, const std::string& module,
                                           const std::string& defaultFilePath) {
    // One thread at a time: closing the file drops every lock that the process holds on it. Never deleted,
    // for logs that are created while static objects are destroyed.
    static auto* const oneAtATime = new std::mutex;
    const std::lock_guard lock(*oneAtATime);

    const NewSection section = DefaultSection(module, defaultFilePath);
    IniReaderWriter ini(path, /*lock=*/true, /*retry=*/false);
    if (!LoadLogConfig(ini)) return std::nullopt;
    if (HasSection(ini, section)) return ReadLogSettings(ini, section.header, defaultFilePath);

    CVIniReaderWriterEx file(path);
    if (AddToFile(file, section)) return ReadLogSettings(file, section.header, defaultFilePath);
    AppendSection(ini, section);
    return ReadLogSettings(ini, section.header, defaultFilePath);
}

}  // namespace quorbel
