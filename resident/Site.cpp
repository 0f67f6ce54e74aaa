#include "resident/Site.h"

#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "CVException.h"
#include "util/SpoolDirectories.h"

namespace quorbel {

namespace {

constexpr char kPrograms[] = "/web/cgi-bin";
constexpr char kConfiguration[] = "../../config";
constexpr char kDirectoryFile[] = "../../config/dir";

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
    DirectoryTable directories = {};
    try {
        ReadDirectories(kDirectoryFile, directories);
    } catch (const CVException& failure) {
        throw std::runtime_error("config/dir: " + failure.GetMessage() + " " + failure.GetSystemMessage());
    }
    const std::string logs = DirectoryOf(directories, DirectorySlot::Log);
    if (access(logs.empty() ? "." : logs.c_str(), W_OK | X_OK) != 0) {
        throw std::runtime_error("log directory " + logs + ": " + GetSystemErrorText());
    }
}

}  // namespace quorbel
