#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "NoCancellation.h"
#include "PathRoutines.h"
#include "src/Descriptor.h"

namespace quorbel {

namespace {

bool WriteAll(int descriptor, std::string_view text) {
    for (off_t at = 0; !text.empty();) {
        const ssize_t count = pwrite(descriptor, text.data(), text.size(), at);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
        at += count;
    }
    return true;
}

bool KeepOwnerAndMode(int descriptor, const struct stat& old) {
    // Only root gives files away; the group is what lets other programs in.
    const bool kept = fchown(descriptor, old.st_uid, old.st_gid) == 0 ||
                      fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0;
    return kept && fchmod(descriptor, old.st_mode & 07777) == 0;
}

bool ReplaceByNew(const std::string& path, std::string_view content, const struct stat* old) {
    const std::string fresh = path + ".new." + std::to_string(getpid());
    const Descriptor file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (file < 0) return false;
    if ((old == nullptr || KeepOwnerAndMode(file, *old)) && WriteAll(file, content) && fsync(file) == 0 &&
        RenameFile(fresh, path)) {
        return true;
    }
    const int code = errno;
    DeleteFile(fresh);
    errno = code;
    return false;
}

std::string Content(int descriptor, off_t size) {
    std::string text(static_cast<std::size_t>(size), '\0');
    const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return text;
}

/// Takes the room first, so that a full disk shows before a byte is lost.
bool Overwrite(const std::string& path, std::string_view content, off_t oldSize) {
    const Descriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (file < 0) return false;
    const std::string before = Content(file, oldSize);
    const auto size = static_cast<off_t>(content.size());
    int code = size == 0 ? 0 : posix_fallocate(file, 0, size);
    if (code == 0 && WriteAll(file, content) && ftruncate(file, size) == 0 && fsync(file) == 0) return true;
    if (code == 0) code = errno;
    const bool restored = WriteAll(file, before) && ftruncate(file, oldSize) == 0;
    errno = restored ? code : EIO;
    return false;
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    const NoCancellation shield;
    std::error_code ignored;
    const std::filesystem::path real = std::filesystem::canonical(path, ignored);
    const std::string target = real.empty() ? path : real.string();  // a link stays one
    struct stat old = {};
    const bool exists = stat(target.c_str(), &old) == 0;
    const bool onlyName = !exists || old.st_nlink == 1;
    if (onlyName && MayAccess(ParentDirectory(target), W_OK | X_OK) &&
        ReplaceByNew(target, content, exists ? &old : nullptr)) {
        return true;
    }
    const bool refused = !onlyName || errno == EACCES || errno == EPERM;
    return exists && refused && Overwrite(target, content, old.st_size);
}

}  // namespace quorbel
