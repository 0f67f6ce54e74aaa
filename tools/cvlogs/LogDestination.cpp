#include "tools/cvlogs/LogDestination.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "CVException.h"
#include "PathRoutines.h"
#include "cvdblib/sqlite3/src/DatabaseFile.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using Kind = LogDestination::Kind;

constexpr char kDatabaseStart[] = "SQLite format 3";  // its zero byte is part of it

bool Allows(const std::string& path, int mode) {
    return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string Refusal(const std::string& path) {
    return path + ": " + GetSystemErrorText();
}

std::string DirectoryOf(const std::string& path) {
    const std::string directory = std::filesystem::path(path).parent_path();
    return directory.empty() ? "." : directory;
}

bool IsRefused(const std::string& file) {
    return Allows(file, F_OK) && !Allows(file, R_OK | W_OK);
}

// Anything but an empty file and one that begins as SQLite's do.
bool IsForeign(const std::string& path) {
    std::string start(sizeof kDatabaseStart, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return file.gcount() > 0 && start != std::string(kDatabaseStart, sizeof kDatabaseStart);
}

std::string WhyNotWritable(const std::string& path) {
    const std::string directory = DirectoryOf(path);
    if (!Allows(directory, W_OK | X_OK)) return "takes no new files: " + Refusal(directory);
    if (IsDirectory(path)) return path + ": is a directory";
    if (IsRefused(path)) return Refusal(path);
    return {};
}

std::int32_t Number(const std::string& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<long long>(std::strtoll(value.c_str(), nullptr, 10), Limits::min(), Limits::max()));
}

void SetNonZero(std::int32_t& setting, const std::string& value) {
    if (Number(value) != 0) setting = Number(value);
}

// A path that cannot be used leaves the one before it in force.
void SetPath(LogDestination& file, const std::string& value) {
    const std::string refusal = WhyNotWritable(value);
    if (!refusal.empty() && !file.path.empty() && file.notReady.empty()) return;
    file.path = value;
    file.notReady = refusal;
}

void FindFile(const LogSettings& settings, LogDestination& file) {
    for (const auto& [key, value] : settings.properties) {
        if (EqualNoCase(key, "filePath")) SetPath(file, value);
        if (EqualNoCase(key, "numFiles")) SetNonZero(file.archive.files, value);
        if (EqualNoCase(key, "bytesPerFiles")) SetNonZero(file.archive.bytesPerFile, value);
        if (EqualNoCase(key, "perProcessFile")) file.perProcessFile = Number(value) != 0;
    }
    if (file.notReady.empty() && IsRefused(file.path + ".lock")) file.notReady = Refusal(file.path + ".lock");
}

void FindDatabase(const LogSettings& settings, LogDestination& database) {
    for (const auto& [key, value] : settings.properties) {
        if (EqualNoCase(key, "dbfilename") || EqualNoCase(key, "filename")) database.path = value;
    }
    if (database.path.empty()) {
        database.notReady = "there is no dbfilename";
    } else if (!IsWritableDatabase(database.path)) {
        const std::string refusal = WhyNotWritable(database.path);
        database.notReady = refusal.empty() ? database.path + ": is no file" : refusal;
    } else if (IsForeign(database.path)) {
        database.notReady = database.path + ": is not a database";
    }
}

void FindErrorStream(const LogSettings& /*settings*/, LogDestination& /*stream*/) {}

constexpr struct {
    const char* writer;
    Kind kind;
    void (*find)(const LogSettings& settings, LogDestination& destination);
} kWriters[] = {
    {"file", Kind::File, FindFile},
    {"sqlite", Kind::Database, FindDatabase},
    {"qtdebug", Kind::ErrorStream, FindErrorStream},
};

}  // namespace

LogDestination FindLogDestination(const LogSettings& settings) {
    LogDestination destination;
    for (const auto& row : kWriters) {
        if (!EqualNoCase(settings.writer, row.writer)) continue;
        destination.kind = row.kind;
        row.find(settings, destination);
        return destination;
    }
    destination.notReady = "there is no writer \"" + settings.writer + "\"";
    return destination;
}

bool IsLogWriter(const std::string& name) {
    return std::any_of(std::begin(kWriters), std::end(kWriters),
                       [&](const auto& row) { return EqualNoCase(name, row.writer); });
}

}  // namespace quorbel
