#include "tools/cvlogs/DatabaseChoice.h"

#include <unistd.h>

#include <algorithm>
#include <set>
#include <stdexcept>

#include "CVException.h"
#include "PathRoutines.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/CVLogSQLiteProcessor.h"
#include "syslib/LogConfig.h"
#include "tools/operator/CommandLine.h"

namespace quorbel {

namespace {

template <class Names>
std::string Listed(const Names& names) {
    std::string list;
    for (const auto& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

bool NamesDatabase(const WriterDescription& destination) {
    return destination.kind == WriterDescription::Kind::Database && !destination.path.empty();
}

std::set<std::string> ConfiguredDatabases(LogConfig& config) {
    std::set<std::string> paths;
    for (const auto& module : config.Modules()) {
        const WriterDescription destination = config.Find(module).destination;
        if (NamesDatabase(destination)) paths.insert(destination.path);
    }
    return paths;
}

std::string WhyNotOpened(const std::string& path, int mode) {
    return MayAccess(path, mode) ? "it is no regular file, or its directory takes no new files"
                                 : GetSystemErrorText();
}

[[noreturn]] void FailToOpen(const std::string& path, const std::string& reason) {
    throw std::runtime_error("cannot open log database " + path + ": " + reason);
}

void RequireModule(CVLogDBProcessorInterface& database, const std::string& path, const std::string& module) {
    const auto modules = database.Modules();
    if (module.empty() || std::find(modules.begin(), modules.end(), module) != modules.end()) return;
    throw std::runtime_error("no module \"" + module + "\" in " + path +
                             (modules.empty() ? "" : "; it has " + Listed(modules)));
}

OpenDatabase Open(const std::string& path, const std::string& module) {
    try {
        auto database = std::make_unique<CVLogSQLiteProcessor>(path, /*create=*/false);
        RequireModule(*database, path, module);
        return database;
    } catch (const CVDBProcessorFatalException& failure) {
        if (IsWritableDatabase(path)) throw;
        throw std::runtime_error(std::string(failure.what()) +
                                 ". Unless a program has the database open, its reader must be allowed to "
                                 "write the file and its directory.");
    }
}

void RequireOne(const DatabaseChoice& choice) {
    if (choice.file.empty() && choice.configDirectory.empty()) {
        throw UsageError("which log database? --db or --config-dir is required");
    }
}

}  // namespace

std::string DatabaseOf(const DatabaseChoice& choice, const std::string& module) {
    RequireOne(choice);
    if (!choice.file.empty()) return choice.file;
    LogConfig config(choice.configDirectory);
    const ModuleLog log = config.Find(module);
    const WriterDescription& destination = log.destination;
    if (NamesDatabase(destination)) return destination.path;
    throw std::runtime_error("[" + module + "] of " + config.Path() +
                             " logs to no database (writer=" + log.writer + ")");
}

std::string OnlyDatabase(const DatabaseChoice& choice) {
    RequireOne(choice);
    if (!choice.file.empty()) return choice.file;
    LogConfig config(choice.configDirectory);
    const auto paths = ConfiguredDatabases(config);
    if (paths.size() == 1) return *paths.begin();
    throw std::runtime_error(
        paths.empty() ? config.Path() + " names no database"
                      : config.Path() + " names several databases, choose one with --db: " + Listed(paths));
}

OpenDatabase OpenForReading(const std::string& path, const std::string& module) {
    if (!IsReadableDatabase(path)) FailToOpen(path, WhyNotOpened(path, R_OK));
    return Open(path, module);
}

OpenDatabase OpenForChanging(const std::string& path, const std::string& module) {
    if (!IsReadableDatabase(path)) FailToOpen(path, WhyNotOpened(path, R_OK));
    if (!IsWritableDatabase(path)) FailToOpen(path, WhyNotOpened(path, W_OK));
    return Open(path, module);
}

}  // namespace quorbel
