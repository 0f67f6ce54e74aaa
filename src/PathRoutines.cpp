#include "PathRoutines.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "CVException.h"
#include "CVioFile.h"
#include "NoCancellation.h"

using namespace quorbel;

namespace quorbel {

bool RenameFile(const std::string& from, const std::string& to) noexcept {
    return std::rename(from.c_str(), to.c_str()) == 0;
}

bool DeleteFile(const std::string& path) noexcept {
    return unlink(path.c_str()) == 0;
}

bool ChangeMode(const std::string& path, mode_t mode) noexcept {
    return chmod(path.c_str(), mode) == 0;
}

bool MayAccess(const std::string& path, int mode) noexcept {
    return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string ParentDirectory(const std::string& path) {
    const std::string directory = std::filesystem::path(path).parent_path();
    return directory.empty() ? "." : directory;
}

}  // namespace quorbel

bool IsDirectory(const std::string& path) noexcept {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

namespace quorbel {

bool CopyFile(const std::string& from, const std::string& to) {
    struct stat source = {};
    struct stat target = {};
    if (stat(from.c_str(), &source) != 0) return false;
    // Opening the target would empty the source.
    if (stat(to.c_str(), &target) == 0 && source.st_dev == target.st_dev && source.st_ino == target.st_ino) {
        errno = EINVAL;
        return false;
    }
    CVioFile input(from);
    CVioFile output(to);
    try {
        input.Open("rb");
        output.Open("wb");
        std::array<char, 65536> block;
        while (const std::size_t length = input.Read(block.data(), block.size())) {
            output.Write(block.data(), length);
        }
    } catch (const CVioException&) {
        return false;
    }
    return ChangeMode(to, source.st_mode & 07777);
}

std::string CurrentTimeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

}  // namespace quorbel

int CreateLockFile(const char* directory) {
    const NoCancellation shield;
    constexpr std::size_t kLongestPath = 256;
    std::string path = directory == nullptr || *directory == '\0' ? "./" : directory;
    if (path.size() + std::strlen("lock") > kLongestPath) return -1;
    if (path.back() != '/' && path.back() != '\\') path += '/';
    path += "lock";

    int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor >= 0) return descriptor;
    descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) return -1;
    constexpr ssize_t kLength = 6;
    if (write(descriptor, "locker", kLength) != kLength) {
        close(descriptor);
        return -1;
    }
    fchmod(descriptor, 0666);  // past the umask: the utilities run as different users
    return descriptor;
}
