#include "cvdblib/sqlite3/src/DatabaseFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quorbel {

namespace {

bool Allows(const std::string& path, int mode) {
    return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string DirectoryOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool IsRegular(const struct stat& status) {
    return S_ISREG(status.st_mode);
}

}  // namespace

bool IsReadableDatabase(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && IsRegular(status) && Allows(path, R_OK);
}

bool IsWritableDatabase(const std::string& path) {
    // For SQLite these two are databases that vanish with the connection.
    if (path.empty() || path == ":memory:") return false;
    if (!Allows(DirectoryOf(path), W_OK | X_OK)) return false;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
    return IsRegular(status) && Allows(path, R_OK | W_OK);
}

}  // namespace quorbel
