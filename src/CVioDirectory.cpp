#include "CVioDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "CVException.h"
#include "NoCancellation.h"

using namespace quorbel;

namespace {

struct Closer {
    void operator()(DIR* directory) const noexcept { closedir(directory); }
};

[[noreturn]] void RaiseDirectoryFailure(const std::string& path, int line, const char* message) {
    throw CVioException(path, "CVioDirectory", line, message, GetSystemErrorText());
}

/// The next name, or null at the end.
const char* NextName(DIR* directory, const std::string& path) {
    errno = 0;
    const dirent* const entry = readdir(directory);
    if (entry == nullptr && errno != 0) RaiseDirectoryFailure(path, __LINE__, "Read Directory Failed");
    return entry == nullptr ? nullptr : entry->d_name;
}

}  // namespace

CVioDirectory::CVioDirectory(std::string path) : path_(std::move(path)) {}

std::vector<std::string> CVioDirectory::List() const {
    const NoCancellation shield;
    const std::unique_ptr<DIR, Closer> directory(opendir(path_.c_str()));
    if (directory == nullptr) RaiseDirectoryFailure(path_, __LINE__, "Read Directory Failed");

    std::vector<std::string> names;
    while (const char* const name = NextName(directory.get(), path_)) {
        if (std::string_view(name) == "." || std::string_view(name) == "..") continue;
        struct stat status = {};
        if (fstatat(dirfd(directory.get()), name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
            names.emplace_back(name);
        } else if (errno != ENOENT) {  // ENOENT: renamed or deleted since, as happens beside log rotation
            RaiseDirectoryFailure(path_ + "/" + name, __LINE__, "File Get State Failed");
        }
    }
    return names;
}

std::vector<std::string> CVioDirectory::ListWithoutLock() const {
    std::vector<std::string> names = List();
    std::erase(names, "lock");
    return names;
}
