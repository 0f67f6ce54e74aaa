#include "src/LockedPath.h"

#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>

namespace quorbel {

namespace {

/// The path with the links, "." and ".." of its directory resolved.
std::string Canonical(const std::string& path) {
    const auto name = path.rfind('/') + 1;
    const std::string directory = name == 0 ? "." : path.substr(0, name);
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(directory.c_str(), nullptr), &std::free);
    return real == nullptr ? path : std::string(real.get()) + "/" + path.substr(name);
}

}  // namespace

LockedPath& LockedPath::Of(const std::string& path) {
    struct Table {
        std::mutex mutex;
        std::map<std::string, LockedPath*> bySpelling;  // saves resolving the directory for each entry
        std::map<std::string, LockedPath> byFile;
    };
    static Table& table = *new Table;
    const std::lock_guard guard(table.mutex);
    LockedPath*& known = table.bySpelling[path];
    if (known == nullptr) known = &table.byFile[Canonical(path)];
    return *known;
}

bool LockedPath::TryTake() {
    // The mark of another process is the parent's, from before a fork: file locks are not inherited.
    const pid_t self = getpid();
    pid_t holder = holder_.load();
    return holder != self && holder_.compare_exchange_strong(holder, self);
}

void LockedPath::Free() {
    holder_.store(0);
}

}  // namespace quorbel
