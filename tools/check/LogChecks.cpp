#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "syslib/LogConfig.h"
#include "syslib/LogPaths.h"
#include "tools/check/Finding.h"
#include "tools/cvlogs/LikelyMistakes.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

// A lock is held for the time of one entry.
constexpr auto kLong = std::chrono::seconds(1);
constexpr auto kPause = std::chrono::milliseconds(20);
constexpr const char* kFrontEnd = "SOAP";

Finding CheckModule(const ModuleLog& log) {
    const WriterDescription& writer = log.destination;
    const std::string point = "log of " + log.module;
    const bool isFrontEnd = EqualNoCase(log.module, kFrontEnd);
    if (!writer.notReady.empty()) {
        return {isFrontEnd ? State::Critical : State::Warning, point,
                writer.notReady + (isFrontEnd ? ": every request is refused" : "")};
    }
    const std::string place = writer.path.empty() ? "standard error" : writer.path;
    return {State::Ok, point,
            "writes to " + place + " from level " +
                std::string(LogLevelName(static_cast<unsigned>(log.level))) + " on"};
}

/// The process that holds a lock on the file; 0 when nobody does.
pid_t HolderOf(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return 0;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    const bool asked = fcntl(descriptor, F_GETLK, &lock) == 0;
    close(descriptor);
    return asked && lock.l_type != F_UNLCK ? lock.l_pid : 0;
}

Findings CheckLock(const std::string& path) {
    const pid_t holder = HolderOf(path);
    if (holder == 0) return {};
    const auto end = std::chrono::steady_clock::now() + kLong;
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        if (HolderOf(path) != holder) return {};
    }
    return {{State::Critical, "lock",
             path + " has been held for more than a second by process " + std::to_string(holder) +
                 ": requests wait for it"}};
}

Findings CheckLocks(const std::string& directory) {
    Findings findings;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(directory, failed)) {
        if (entry.path().extension() != ".lock") continue;
        const Findings held = CheckLock(entry.path());
        findings.insert(findings.end(), held.begin(), held.end());
    }
    return findings;
}

}  // namespace

Findings CheckLogs(const Site& site) {
    Findings findings;
    try {
        UseLogDirectory(site.config);
        LogConfig config(site.config);
        for (const auto& module : config.Modules()) {
            if (EqualNoCase(module, "common")) continue;
            const ModuleLog log = config.Find(module);
            findings.push_back(CheckModule(log));
            const Findings locks = CheckLocks(LogDirectoryOf(log.destination.path));
            if (EqualNoCase(module, kFrontEnd)) findings.insert(findings.end(), locks.begin(), locks.end());
        }
        for (const auto& mistake : FindLikelyMistakes(config.Lines(), config.Path())) {
            findings.push_back({State::Warning, "cvlogs.ini", mistake});
        }
    } catch (const std::runtime_error& failure) {
        findings.push_back({State::Critical, "cvlogs.ini", failure.what()});
    }
    const Findings locks = CheckLocks(site.config);
    findings.insert(findings.end(), locks.begin(), locks.end());
    return findings;
}

}  // namespace quorbel
