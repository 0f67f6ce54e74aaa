#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>

namespace quorbel {

/// By what a file is known again: identity, size and times. Two stamps of a path differ when another file stands there
/// or the file was changed, as far as the file system's clock shows it. Take the stamp before reading the file: then
/// a change in between is seen next time.
class FileStamp {
public:
    /// Of nothing that was looked at.
    FileStamp() = default;
    /// Of what stands at `path`: the file, or a link that leads to none. Nothing that can be looked at there has a stamp,
    /// too, and anything differs from it.
    explicit FileStamp(const std::string& path);

    bool operator==(const FileStamp& other) const;
    /// False for a file that had been changed within the last second or two when the stamp was taken: another change at
    /// once would not show. And where nothing was looked at.
    bool IsReliable() const { return isReliable_; }

private:
    dev_t device_ = 0;
    ino_t number_ = 0;
    off_t size_ = 0;
    timespec modified_{};
    timespec changed_{};
    bool isReliable_ = false;
};

}  // namespace quorbel
