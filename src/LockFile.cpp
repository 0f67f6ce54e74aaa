#include "LockFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <map>
#include <mutex>
#include <random>
#include <thread>

#include "CVException.h"
#include "CVconThread.h"
#include "CVioDirectory.h"
#include "NoCancellation.h"
#include "PathRoutines.h"
#include "src/Descriptor.h"
#include "src/RecordLock.h"

using namespace quorbel;

namespace {

/// The path with the links, "." and ".." of its directory resolved.
std::string Canonical(const std::string& path) {
    std::error_code failure;
    const auto directory = std::filesystem::canonical(ParentDirectory(path), failure);
    return failure ? path : (directory / std::filesystem::path(path).filename()).string();
}

}  // namespace

namespace quorbel {

/// Whether this process holds the lock of one path: the kernel's file locks do not tell its threads apart.
///
/// There is one object for each file, whatever its path's spelling, and it lives until the process ends: a
/// detached thread may still log while static objects are destroyed.
class LockedPath {
public:
    static LockedPath& Of(const std::string& path);

    /// True when nobody held it; it is this caller's then, until Free. Never waits.
    bool TryTake();
    void Free() { holder_.store(0); }

    // The lock file, kept open from one lock to the next: for whoever has taken the path. A child process may
    // use it, too, since record locks belong to processes and not to descriptors.
    int kept = -1;
    dev_t device = 0;
    ino_t number = 0;

private:
    std::atomic<pid_t> holder_{0};
};

LockedPath& LockedPath::Of(const std::string& path) {
    struct Table {
        std::mutex mutex;
        std::map<std::string, LockedPath*> bySpelling;  // saves resolving the directory for each entry
        std::map<std::string, LockedPath> byFile;
    };
    static Table& table = *new Table;
    // A thread that is in here while another one forks must not leave the mutex taken in the child.
    [[maybe_unused]] static const int registered = pthread_atfork(
        [] { table.mutex.lock(); }, [] { table.mutex.unlock(); }, [] { table.mutex.unlock(); });
    const std::lock_guard guard(table.mutex);
    LockedPath*& known = table.bySpelling[path];
    if (known == nullptr) known = &table.byFile[Canonical(path)];
    return *known;
}

bool LockedPath::TryTake() {
    // The mark of another process is the parent's, from before a fork: file locks are not inherited.
    const pid_t self = OwnProcess();
    pid_t holder = holder_.load();
    return holder != self && holder_.compare_exchange_strong(holder, self);
}

}  // namespace quorbel

namespace {

using std::chrono::microseconds;

int OpenOrCreate(const char* path) {
    constexpr int kFlags = O_RDWR | O_SYNC | O_CLOEXEC;
    constexpr mode_t kMode = 0664;
    int descriptor = open(path, kFlags);
    if (descriptor >= 0 || errno != ENOENT) return descriptor;
    descriptor = open(path, kFlags | O_CREAT | O_EXCL, kMode);
    if (descriptor < 0 && errno == EEXIST) descriptor = open(path, kFlags | O_CREAT, kMode);
    // Past the umask: programs of other users share the log.
    if (descriptor >= 0) fchmod(descriptor, kMode);
    return descriptor;
}

/// False when the file was deleted, and perhaps created anew, since it was opened: a lock on it keeps out
/// nobody.
bool StillNames(const char* path, dev_t device, ino_t number) {
    struct stat named = {};
    return stat(path, &named) == 0 && named.st_dev == device && named.st_ino == number;
}

bool OpenKept(LockedPath& taken, const char* path) {
    struct stat opened = {};
    taken.kept = OpenOrCreate(path);
    if (taken.kept < 0 || fstat(taken.kept, &opened) != 0) return false;
    taken.device = opened.st_dev;
    taken.number = opened.st_ino;
    return true;
}

/// A program that becomes a daemon closes every descriptor, and the number may belong to another file by now.
void ForgetUnlessStillOurs(LockedPath& taken) {
    struct stat open = {};
    if (taken.kept < 0) return;
    if (fstat(taken.kept, &open) != 0 || open.st_dev != taken.device || open.st_ino != taken.number)
        taken.kept = -1;
}

void CloseKept(LockedPath& taken) {
    CloseKeepingErrno(taken.kept);
    taken.kept = -1;
}

enum class Answer { Granted, Busy, Useless };

/// Asks the kernel once; `errno` tells the cause unless it grants the lock.
Answer AskKernel(LockedPath& taken, const char* path) {
    constexpr int kRounds = 100;
    ForgetUnlessStillOurs(taken);
    for (int round = 0; round < kRounds; ++round) {
        if (taken.kept < 0 && !OpenKept(taken, path)) {
            const bool passing = errno == EINTR || errno == EMFILE || errno == ENFILE;
            return passing ? Answer::Busy : Answer::Useless;
        }
        const bool granted = RequestRecordLock(taken.kept, F_SETLK, F_WRLCK) == 0;
        const bool busy = !granted && (errno == EAGAIN || errno == EACCES);
        if (granted && StillNames(path, taken.device, taken.number)) return Answer::Granted;
        // A busy one that no longer has the name is left to whoever holds it.
        if (busy && StillNames(path, taken.device, taken.number)) {
            errno = EAGAIN;
            return Answer::Busy;
        }
        CloseKept(taken);
        if (!granted && !busy) return Answer::Useless;
    }
    errno = EAGAIN;
    return Answer::Busy;
}

/// One try for the lock, against threads first: while one of them holds it, opening and closing the file
/// would drop its lock. A granted one is to be given to Release.
Answer TryOnce(LockedPath& taken, const std::string& path) {
    const NoCancellation shield;
    if (!taken.TryTake()) {
        errno = EAGAIN;
        return Answer::Busy;
    }
    const Answer answer = AskKernel(taken, path.c_str());
    if (answer != Answer::Granted) taken.Free();
    return answer;
}

void Release(LockedPath& taken) noexcept {
    const NoCancellation shield;
    const int code = errno;
    if (RequestRecordLock(taken.kept, F_SETLK, F_UNLCK) != 0) CloseKept(taken);
    errno = code;
    taken.Free();  // not earlier: the next thread would lose its lock
}

/// The waits between the probes of one attempt: growing, so that a short wait costs little and a long one
/// little work, and uneven, so that processes that wait together do not ask together.
class Waits {
public:
    microseconds Next(microseconds left) {
        std::uniform_int_distribution<microseconds::rep> spread(next_ / 2, next_ * 3 / 2);
        const microseconds wait{spread(random_)};
        next_ = std::min(next_ * 2, kLongest);
        return std::min(wait, left);
    }

private:
    static constexpr microseconds::rep kShortest = 150;
    static constexpr microseconds::rep kLongest = 1400;

    microseconds::rep next_ = kShortest;
    // Not rand(): its sequence is the caller's.
    std::minstd_rand random_{
        static_cast<unsigned>(std::chrono::steady_clock::now().time_since_epoch().count())};
};

void Sleep(const LockRetry& retry, microseconds wait) {
    if (retry.sleep) {
        retry.sleep(wait);
    } else {
        std::this_thread::sleep_for(wait);
    }
}

/// Probes for the length of one pause, at least once.
Answer Attempt(LockedPath& taken, const std::string& path, const LockRetry& retry) {
    Answer answer = TryOnce(taken, path);
    if (answer != Answer::Busy) return answer;
    Waits waits;
    for (microseconds left = retry.pause; answer == Answer::Busy && left > microseconds::zero();) {
        const microseconds wait = waits.Next(left);
        Sleep(retry, wait);
        left -= wait;
        answer = TryOnce(taken, path);
    }
    return answer;
}

void RemoveIfDead(const std::string& path) {
    const NoCancellation shield;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size != 0) return;
    LockedPath& taken = LockedPath::Of(path);
    if (!taken.TryTake()) return;
    if (taken.kept >= 0) return taken.Free();  // this process uses it
    const int descriptor = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0 && RequestRecordLock(descriptor, F_SETLK, F_WRLCK) == 0 &&
        fstat(descriptor, &status) == 0 && status.st_size == 0 &&
        StillNames(path.c_str(), status.st_dev, status.st_ino)) {
        unlink(path.c_str());  // while it is held: whoever waits for it will see that the path is gone
    }
    if (descriptor >= 0) close(descriptor);
    taken.Free();
}

}  // namespace

LockFile::LockFile(const std::string& path, const LockRetry& retry) : path_(&LockedPath::Of(path)) {
    Answer answer = Answer::Busy;
    for (int attempt = 0; attempt < retry.attempts && answer == Answer::Busy; ++attempt) {
        answer = Attempt(*path_, path, retry);
        // A log's worker waits with cancellation off, and must not keep a stopping service for a minute.
        if (answer == Answer::Busy && CVconThread::KillRequested()) {
            errno = EINTR;
            break;
        }
    }
    if (answer != Answer::Granted) {
        throw CVException("LockFile", __LINE__, "LockFile Creation Failed", GetSystemErrorText());
    }
}

LockFile::~LockFile() {
    if (IsHeld()) Release(*path_);
}

namespace quorbel {

bool IsLockUsable(const std::string& path) {
    LockedPath& taken = LockedPath::Of(path);
    const Answer answer = TryOnce(taken, path);
    if (answer == Answer::Granted) Release(taken);
    return answer != Answer::Useless;
}

void RemoveDeadLockFiles(const std::string& directory) {
    const std::string prefix = directory + "/";
    for (const std::string& name : CVioDirectory(directory).List()) {
        if (name.ends_with(".lock")) RemoveIfDead(prefix + name);
    }
}

}  // namespace quorbel
