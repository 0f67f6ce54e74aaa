#include <fcntl.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

#include "src/Descriptor.h"
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
    // Without waiting: a pipe of that name has nobody at its other end.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? lock.l_pid : 0;
}

/// Who holds which lock file at this moment.
std::map<std::string, pid_t> HeldLocks(const std::set<std::string>& directories) {
    std::map<std::string, pid_t> held;
    for (const auto& directory : directories) {
        std::error_code failed;
        for (const auto& entry : std::filesystem::directory_iterator(directory, failed)) {
            if (entry.path().extension() != ".lock") continue;
            if (const pid_t holder = HolderOf(entry.path()); holder != 0) held[entry.path()] = holder;
        }
    }
    return held;
}

/// Takes a second, however many locks are held.
Findings CheckLocks(const std::set<std::string>& directories) {
    auto held = HeldLocks(directories);
    const auto end = std::chrono::steady_clock::now() + kLong;
    while (!held.empty() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        std::erase_if(held, [](const auto& lock) { return HolderOf(lock.first) != lock.second; });
    }
    Findings findings;
    for (const auto& [path, holder] : held) {
        findings.push_back({State::Critical, "lock",
                            path + " has been held for more than a second by process " +
                                std::to_string(holder) + ": what writes there waits for it"});
    }
    return findings;
}

}  // namespace

Findings CheckLogs(const Site& site) {
    Findings findings;
    std::set<std::string> directories = {site.config};
    try {
        UseLogDirectory(site.config);
        LogConfig config(site.config);
        for (const auto& module : config.Modules()) {
            if (EqualNoCase(module, "common")) continue;
            const ModuleLog log = config.Find(module);
            findings.push_back(CheckModule(log));
            const std::string& file = log.destination.path;
            if (!file.empty()) directories.insert(LogDirectoryOf(file));
        }
        for (const auto& mistake : FindLikelyMistakes(config.Lines(), config.Path())) {
            findings.push_back({State::Warning, "cvlogs.ini", mistake});
        }
    } catch (const std::runtime_error& failure) {
        findings.push_back({State::Critical, "cvlogs.ini", failure.what()});
    }
    const Findings locks = CheckLocks(directories);
    findings.insert(findings.end(), locks.begin(), locks.end());
    return findings;
}

}  // namespace quorbel
