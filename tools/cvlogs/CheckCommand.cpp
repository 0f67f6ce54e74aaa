#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "syslib/LogConfig.h"
#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/LikelyMistakes.h"
#include "tools/operator/Output.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using Rows = std::vector<std::pair<const char*, std::string>>;

std::string UserName() {
    const passwd* user = getpwuid(geteuid());
    return user != nullptr ? user->pw_name : std::to_string(geteuid());
}

std::string WithSize(const std::string& path) {
    std::error_code failed;
    const auto size = std::filesystem::file_size(path, failed);
    return path + (failed ? "" : " (" + std::to_string(size) + " bytes)");
}

void AddFileRows(const WriterDescription& file, Rows& rows) {
    rows.emplace_back("file", WithSize(file.path));
    if (file.perProcessFile) rows.emplace_back("", "entries go to MODULE.txt beside it");
    rows.emplace_back("archives", std::to_string(file.archive.files) + ", one at every " +
                                      std::to_string(file.archive.bytesPerFile) + " bytes");
}

Rows Describe(const ModuleLog& log) {
    Rows rows = {{"writer", log.writer},
                 {"level", std::string(LogLevelName(static_cast<unsigned>(log.level)))}};
    const WriterDescription& destination = log.destination;
    if (destination.kind == WriterDescription::Kind::File) AddFileRows(destination, rows);
    if (destination.kind == WriterDescription::Kind::Database) {
        rows.emplace_back("database", WithSize(destination.path));
    }
    rows.emplace_back("ready", destination.notReady.empty() ? "yes" : "no: " + destination.notReady);
    return rows;
}

void Print(const ModuleLog& log) {
    PrintLine("");
    PrintLine(log.module);
    for (const auto& [label, text] : Describe(log)) {
        std::string line = "    " + std::string(label);
        line.resize(14, ' ');
        PrintLine(line + text);
    }
}

void RequireReady(const std::vector<std::string>& notReady) {
    if (notReady.empty()) return;
    std::string text = "not ready:";
    for (const auto& module : notReady) text += (module == notReady.front() ? " " : ", ") + module;
    throw std::runtime_error(text);
}

std::vector<std::string> FindWarnings(LogConfig& config, const std::string& unreadDirectories) {
    auto warnings = FindLikelyMistakes(config.Lines(), config.Path());
    if (!unreadDirectories.empty()) {
        warnings.insert(warnings.begin(),
                        "the front end answers every request with a fault: " + unreadDirectories);
    }
    return warnings;
}

}  // namespace

void CheckConfiguration(const std::string& configDirectory) {
    const std::string unreadDirectories = UseLogDirectory(configDirectory);
    LogConfig config(configDirectory);
    PrintLine(config.Path() + " as user " + UserName() + " finds it");
    std::vector<std::string> notReady;
    for (const auto& module : config.Modules()) {
        const ModuleLog log = config.Find(module);
        Print(log);
        // The shared writer matters where a module uses it.
        if (!log.destination.notReady.empty() && !EqualNoCase(module, "common")) notReady.push_back(module);
    }
    const auto warnings = FindWarnings(config, unreadDirectories);
    if (!warnings.empty()) PrintLine("");
    for (const auto& warning : warnings) PrintLine("warning: " + warning);
    RequireReady(notReady);
}

}  // namespace quorbel
