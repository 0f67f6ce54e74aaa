#include "resident/Site.h"

#include <unistd.h>

#include <stdexcept>

#include "CVException.h"
#include "syslib/LogConfig.h"
#include "syslib/LogPaths.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kPrograms[] = "/web/cgi-bin";
constexpr char kConfiguration[] = "../../config";
constexpr char kDirectoryFile[] = "../../config/dir";
constexpr char kModule[] = "SOAP";

/// Also takes its log directory.
void CheckDirectoryFile() {
    DirectoryTable directories = {};
    try {
        const std::size_t queues = ReadDirectories(kDirectoryFile, directories);
        SetDefaultLogPath(DirectoryOf(directories, DirectorySlot::Log));
        if (queues > 0 || access(kDirectoryFile, R_OK | W_OK) == 0) return;
    } catch (const CVException& failure) {
        throw std::runtime_error("config/dir: " + failure.GetMessage() + " " + failure.GetSystemMessage());
    }
    throw std::runtime_error("config/dir: names no queue and cannot be written");
}

/// Why no request could write its log; empty when each can. A section that is missing is what its program adds.
std::string WhyNoLog() {
    if (access(LogConfigPath(kConfiguration).c_str(), F_OK) == 0) {
        LogConfig config(kConfiguration);
        for (const std::string& module : config.Modules()) {
            if (EqualNoCase(module, kModule)) return config.Find(module).destination.notReady;
        }
    }
    return WhyNotWritable(DefaultLogPath(LogFileName(kModule), kConfiguration));
}

}  // namespace

void EnterSite(const std::string& site) {
    if (chdir((site + kPrograms).c_str()) != 0) {
        throw std::runtime_error(site + kPrograms + ": " + GetSystemErrorText());
    }
    if (access(kConfiguration, X_OK) != 0) {
        throw std::runtime_error(site + "/config: " + GetSystemErrorText());
    }
}

void CheckSite() {
    CheckDirectoryFile();
    const std::string reason = WhyNoLog();
    if (!reason.empty()) throw std::runtime_error("log of SOAP: " + reason);
}

}  // namespace quorbel
