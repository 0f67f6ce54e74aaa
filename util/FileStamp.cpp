#include "util/FileStamp.h"

#include <sys/stat.h>

#include <tuple>

namespace quorbel {

FileStamp::FileStamp(const std::string& path) {
    struct stat status {};
    isReliable_ = true;
    if (path.empty() || (stat(path.c_str(), &status) != 0 && lstat(path.c_str(), &status) != 0)) return;
    device_ = status.st_dev;
    number_ = status.st_ino;
    size_ = status.st_size;
    modified_ = status.st_mtim;
    changed_ = status.st_ctim;
    isReliable_ = changed_.tv_sec + 1 < std::time(nullptr);
}

bool FileStamp::operator==(const FileStamp& other) const {
    const auto parts = [](const FileStamp& stamp) {
        return std::tuple(stamp.device_, stamp.number_, stamp.size_, stamp.modified_.tv_sec,
                          stamp.modified_.tv_nsec, stamp.changed_.tv_sec, stamp.changed_.tv_nsec);
    };
    return parts(*this) == parts(other);
}

}  // namespace quorbel
