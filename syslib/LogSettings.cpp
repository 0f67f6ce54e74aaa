#include "syslib/LogSettings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <thread>

#include "CVException.h"
#include "LockFile.h"
#include "PathRoutines.h"
#include "syslib/CVIniReaderWriterEx.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace fs = std::filesystem;

namespace {

// A section with its entries as they are to stand in the file; the header includes its brackets.
struct LogSection {
    std::string header;
    std::vector<std::pair<std::string, std::string>> entries;
};

constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::milliseconds kAttempt{30};
// Longer lines would be cut, and the next one would stick to what is left.
constexpr std::size_t kLongestLine = 511;

// Whoever holds the file's lock needs it for the moment it takes to read or write a small file. The pauses
// differ, so that processes that start together do not meet again.
template <class Attempt>
bool TryWhileLocked(IniReaderWriter& ini, Attempt attempt) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + kPatience;
    while (!attempt()) {
        const auto now = Clock::now();
        if (ini.LastError() != EAGAIN || now >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(500 + now.time_since_epoch().count() % 4000));
    }
    return true;
}

bool HasSection(IniReaderWriter& ini, const LogSection& section) {
    return ini.FindSection(section.header) != ini.NoSection();
}

void Append(IniReaderWriter& ini, const LogSection& section) {
    ini.section("[main]");
    const auto added = ini.section(section.header);
    for (const auto& [key, value] : section.entries) {
        if (key.size() + value.size() + 2 <= kLongestLine) ini.key(added, key) = value;
    }
}

// The file itself when `path` is a link, so that the link stays one.
std::string RealPath(const std::string& path) {
    std::error_code failed;
    const fs::path real = fs::weakly_canonical(path, failed);
    return failed ? path : real.string();
}

bool KeepOwnerAndMode(int descriptor, const struct stat& old) {
    // Only root gives files away; the group is what lets the other programs in.
    const bool kept = fchown(descriptor, old.st_uid, old.st_gid) == 0 ||
                      fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0;
    return kept && fchmod(descriptor, old.st_mode & 07777) == 0;
}

// Makes `fresh` fit to replace `old`: same rights, and on the disk before it gets the name.
bool Complete(const std::string& fresh, const std::string& old) {
    const int descriptor = open(fresh.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    struct stat status;
    const bool isNew = stat(old.c_str(), &status) != 0;
    const bool done = (isNew || KeepOwnerAndMode(descriptor, status)) && fsync(descriptor) == 0;
    close(descriptor);
    return done;
}

void Replace(IniReaderWriter& ini, const std::string& path) {
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) return;  // it leads nowhere now, and must stay a link
    const std::string fresh = path + ".new";
    DeleteFile(fresh);  // a process that died here may have been another user's
    if (!ini.save(fresh) || !Complete(fresh, path) || !RenameFile(fresh, path)) DeleteFile(fresh);
}

bool TakesNewFiles(const fs::path& directory) {
    return faccessat(AT_FDCWD, directory.empty() ? "." : directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

// Only where there is no other way: a full disk would cost what the file held.
void RewriteInPlace(const std::string& path, const LogSection& section) {
    CVIniReaderWriterEx file(path, /*lock=*/true, /*retry=*/false);
    if (!file.Open() || !LoadLogConfig(file) || HasSection(file, section)) return;
    Append(file, section);
    TryWhileLocked(file, [&] { return file.save(); });
}

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

bool LoadLogConfig(IniReaderWriter& ini) {
    return TryWhileLocked(ini, [&] { return ini.load(); }) || ini.LastError() == ENOENT;
}

namespace {

// Adds a section behind everything else, in the file and in `ini`, unless another process has just done it.
bool AddLogSection(IniReaderWriter& ini, const std::string& path, const LogSection& section) {
    const std::string real = RealPath(path);
    try {
        const LockFile lock(real + ".lock", {.attempts = 333, .pause = kAttempt, .sleep = {}});
        if (!LoadLogConfig(ini)) return false;
        if (HasSection(ini, section)) return true;
        Append(ini, section);
        Replace(ini, real);
        return true;
    } catch (const CVException&) {
        Append(ini, section);
    }
    if (!TakesNewFiles(fs::path(real).parent_path())) RewriteInPlace(real, section);
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

std::optional<LogSettings> LoadLogSettings(const std::string& path, const std::string& module,
                                           const std::string& defaultFilePath) {
    // One thread at a time: closing the file drops every lock that the process holds on it. Never deleted,
    // for logs that are created while static objects are destroyed.
    static auto* const oneAtATime = new std::mutex;
    const std::lock_guard lock(*oneAtATime);

    IniReaderWriter ini(path, /*lock=*/true, /*retry=*/false);
    if (!LoadLogConfig(ini)) return std::nullopt;
    const LogSection section = DefaultSection(module, defaultFilePath);
    if (ini.FindSection(section.header) == ini.NoSection() && !AddLogSection(ini, path, section)) {
        return std::nullopt;
    }
    return ReadLogSettings(ini, section.header, defaultFilePath);
}

}  // namespace quorbel
