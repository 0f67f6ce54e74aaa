#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace quorbel {

// Operations on paths that need no file object. The bool ones answer whether it was done, and leave `errno`
// telling why not; none throws.

bool RenameFile(const std::string& from, const std::string& to) noexcept;
bool DeleteFile(const std::string& path) noexcept;
bool ChangeMode(const std::string& path, mode_t mode) noexcept;
/// `mode` is made of R_OK, W_OK, X_OK and F_OK; the rights are those of the effective user.
bool MayAccess(const std::string& path, int mode) noexcept;

/// The directory that `path` lies in: "." for a bare name, "/" for a name in the root.
std::string ParentDirectory(const std::string& path);

}  // namespace quorbel

bool IsDirectory(const std::string& path) noexcept;

namespace quorbel {

/// Byte for byte, with the source's mode; what stood at `to` is replaced, and is incomplete after a failure.
bool CopyFile(const std::string& from, const std::string& to);

/// Gives the file this content or leaves it as it was; false with `errno` then. Links, owner and mode stay.
///
/// A new file takes the name once it is on the disk. Where that cannot be (no new files in the directory,
/// several names) the content is overwritten in place, after its room was reserved. Locks of this process on
/// the file may be gone afterwards.
bool ReplaceFile(const std::string& path, std::string_view content);

/// The local time as "hh:mm:ss".
std::string CurrentTimeOfDay();

}  // namespace quorbel

/// Opens the file "lock" in `directory` (null or empty: in the current one), made with the text "locker" and
/// open to every user when it is not there. Returns a descriptor that the caller closes, or -1, also for a
/// directory of more than 252 bytes. It locks nothing by itself.
int CreateLockFile(const char* directory);
