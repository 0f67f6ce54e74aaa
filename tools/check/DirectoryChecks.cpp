#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>

#include "CVException.h"
#include "tools/check/Finding.h"
#include "util/SpoolDirectories.h"

namespace quorbel {

namespace {

// What is left of a disk, in percent.
constexpr double kLittle = 10;
constexpr double kAlmostNone = 2;

bool Allows(const std::string& path, int mode) {
    return access(path.c_str(), mode) == 0;
}

// Without a queue the front end completes the file, and refuses all requests when it may not.
Finding CheckFile(const std::string& path, std::size_t queues) {
    if (queues > 0 || Allows(path, R_OK | W_OK)) return {State::Ok, "dir", path + " can be used"};
    return {State::Critical, "dir", path + " names no queue and cannot be written: every request is refused"};
}

Finding CheckDirectory(const char* point, const std::string& path, bool isPrivate) {
    struct stat status {};
    if (path.empty()) return {State::Critical, point, "is not named in dir"};
    if (stat(path.c_str(), &status) != 0) {
        return {State::Critical, point, path + ": " + GetSystemErrorText()};
    }
    if (!S_ISDIR(status.st_mode)) return {State::Critical, point, path + " is no directory"};
    if (!Allows(path, R_OK | W_OK | X_OK)) {
        return {State::Critical, point, path + " takes no new files: " + GetSystemErrorText()};
    }
    if (isPrivate && (status.st_mode & S_IRWXO) != 0) {
        return {State::Warning, point,
                path +
                    ": every user of this machine may enter it, read logs and hold their locks: chmod o= " +
                    path};
    }
    return {State::Ok, point, path + " takes new files"};
}

double Percent(fsfilcnt_t part, fsfilcnt_t whole) {
    constexpr double kAll = 100;
    return whole == 0 ? kAll : kAll * static_cast<double>(part) / static_cast<double>(whole);
}

Finding CheckRoom(const std::string& point, const std::string& path) {
    struct statvfs disk {};
    if (statvfs(path.c_str(), &disk) != 0)
        return {State::Critical, point, path + ": " + GetSystemErrorText()};
    const double space = Percent(disk.f_bavail, disk.f_blocks);
    const double inodes = Percent(disk.f_favail, disk.f_files);
    const double least = std::min(space, inodes);
    const State state = least < kAlmostNone ? State::Critical : least < kLittle ? State::Warning : State::Ok;
    const auto text = [](double percent) { return std::to_string(static_cast<int>(percent)) + " %"; };
    return {state, point,
            path + ": " + text(space) + " of the space and " + text(inodes) + " of the inodes are left"};
}

}  // namespace

Findings CheckDirectories(const Site& site) {
    const std::string path = site.config + "/dir";
    DirectoryTable table = {};
    std::size_t queues = 0;
    try {
        queues = ReadDirectories(path, table);
    } catch (const CVioException& failure) {
        return {{State::Critical, "dir",
                 failure.GetIoPath() + ": " + failure.GetSystemMessage() + ": every request is refused"}};
    }
    const std::string logs = DirectoryOf(table, DirectorySlot::Log);
    Findings findings = {CheckFile(path, queues), CheckDirectory("logs", logs, /*isPrivate=*/true)};
    if (findings.back().state != State::Critical) findings.push_back(CheckRoom("room for logs", logs));
    const std::string spool = DirectoryOf(table, DirectorySlot::Spool);
    if (spool.empty()) return findings;  // known by its queue only
    findings.push_back(CheckDirectory("spool", spool, /*isPrivate=*/false));
    if (findings.back().state != State::Critical) findings.push_back(CheckRoom("room for the spool", spool));
    return findings;
}

}  // namespace quorbel
