#include "syslib/LogConfig.h"

#include <cerrno>
#include <stdexcept>
#include <utility>

#include "CVException.h"
#include "syslib/LogPaths.h"
#include "syslib/LogSettings.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

namespace quorbel {

std::string UseLogDirectory(const std::string& configDirectory) {
    DirectoryTable directories = {};
    try {
        ReadDirectories(configDirectory + "/dir", directories);
    } catch (const CVioException& failure) {
        return failure.GetIoPath() + ": " + failure.GetSystemMessage();
    }
    SetDefaultLogPath(DirectoryOf(directories, DirectorySlot::Log));
    return {};
}

LogConfig::LogConfig(std::string configDirectory)
    : directory_(std::move(configDirectory)),
      path_(LogConfigPath(directory_)),
      ini_(path_, /*lock=*/true, /*retry=*/false) {
    LoadLogConfig(ini_);
    if (ini_.IsLoaded()) return;
    errno = ini_.LastError();
    const std::string cause = GetSystemErrorText();
    throw std::runtime_error("cannot read " + path_ + ": " + cause);
}

std::vector<std::string> LogConfig::Modules() {
    std::vector<std::string> modules;
    for (const auto section : ini_.Sections()) {
        const std::string& header = section->text;
        if (EqualNoCase(header, "[main]") || !header.ends_with(']')) continue;
        if (ini_.FindSection(header) != section) continue;  // programs find the first one of a name
        modules.push_back(header.substr(1, header.size() - 2));
    }
    return modules;
}

ModuleLog LogConfig::Find(const std::string& module) {
    const std::string header = "[" + module + "]";
    if (ini_.FindSection(header) == ini_.NoSection()) {
        throw std::runtime_error(path_ + " has no section " + header);
    }
    const LogSettings own = ReadLogSettings(ini_, header, DefaultLogPath(LogFileName(module), directory_));
    const bool shared = EqualNoCase(own.writer, "common") || EqualNoCase(module, "common");
    return {module, own.writer, own.level, DescribeLogWriter(shared ? SharedSettings() : own, module)};
}

LogSettings LogConfig::SharedSettings() {
    const std::string file = DefaultLogPath("common_logs.txt", directory_);
    if (ini_.FindSection("[common]") != ini_.NoSection()) return ReadLogSettings(ini_, "[common]", file);
    // The first program that needs the section adds it.
    LogSettings added;
    added.writer = "file";
    added.properties.emplace_back("filePath", file);
    return added;
}

}  // namespace quorbel
