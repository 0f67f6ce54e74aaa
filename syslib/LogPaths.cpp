#include "syslib/LogPaths.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>

#include "CVException.h"
#include "PathRoutines.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

struct DefaultDirectory {
    std::mutex mutex;
    std::optional<std::string> directory;
};

// Never deleted: a log may still be created while static objects are destroyed.
DefaultDirectory& ProcessDefault() {
    static auto* const setting = new DefaultDirectory;
    return *setting;
}

std::string Join(std::string directory, const std::string& name) {
    std::string path(directory.size() + name.size() + 2, '\0');
    return MakeConfigPath(path.data(), path.size(), directory.data(), name.c_str());
}

std::string LogsBeside(std::string_view configDirectory) {
    constexpr std::string_view kConfig = "/config";
    if (configDirectory.ends_with('/')) configDirectory.remove_suffix(1);
    if (configDirectory == kConfig.substr(1)) return "./logs/";
    if (configDirectory.ends_with(kConfig)) configDirectory.remove_suffix(kConfig.size());
    return std::string(configDirectory) + "/logs/";
}

}  // namespace

std::string LogConfigPath(const std::string& configDirectory) {
    return configDirectory + (configDirectory.ends_with('/') ? "cvlogs.ini" : "/cvlogs.ini");
}

std::string AbsolutePath(const std::string& path) {
    std::error_code failed;
    const auto absolute = std::filesystem::absolute(path, failed);
    return failed ? path : absolute.string();
}

std::string LogFileName(const std::string& module) {
    std::string name = module;
    for (char& c : name) c = c == ' ' || c == '/' ? '_' : Fold(c);
    return name + "_log.txt";
}

std::string DefaultLogPath(const std::string& fileName, const std::string& configDirectory) {
    DefaultDirectory& setting = ProcessDefault();
    const std::lock_guard lock(setting.mutex);
    return Join(setting.directory.value_or(LogsBeside(configDirectory)), fileName);
}

void SetDefaultLogPath(const std::string& directory) {
    DefaultDirectory& setting = ProcessDefault();
    const std::lock_guard lock(setting.mutex);
    setting.directory = directory;
}

std::string LogDirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return "./";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string WhyNotWritable(const std::string& path) {
    const std::string directory = LogDirectoryOf(path);
    if (!MayAccess(directory, W_OK | X_OK)) {
        return "takes no new files: " + directory + ": " + GetSystemErrorText();
    }
    return WhyRefused(path);
}

std::string WhyRefused(const std::string& path) {
    if (IsDirectory(path)) return path + ": is a directory";
    if (MayAccess(path, R_OK | W_OK)) return "";
    const bool isMissing = errno == ENOENT;  // another program may be archiving it, and make it anew at once
    const std::string reason = GetSystemErrorText();
    return !isMissing && MayAccess(path, F_OK) ? path + ": " + reason : "";
}

}  // namespace quorbel
