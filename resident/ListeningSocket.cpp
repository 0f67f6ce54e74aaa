#include "resident/ListeningSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "CVException.h"
#include "src/Descriptor.h"

namespace quorbel {

namespace {

constexpr int kBacklog = 1024;
constexpr int kFirstHandedOver = 3;
constexpr mode_t kOwnerAndGroup = 0660;

long NumberIn(const char* variable) {
    const char* text = std::getenv(variable);
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

int Option(int descriptor, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

/// The socket that the service manager listens on for this process; -1 without one.
int TakeHandedOver() {
    const long count = NumberIn("LISTEN_PID") == getpid() ? NumberIn("LISTEN_FDS") : 0;
    for (const char* variable : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) unsetenv(variable);
    if (count <= 0) return -1;
    const int descriptor = kFirstHandedOver;
    if (count > 1 || Option(descriptor, SO_DOMAIN) != AF_UNIX || Option(descriptor, SO_TYPE) != SOCK_STREAM ||
        Option(descriptor, SO_ACCEPTCONN) != 1) {
        throw std::runtime_error("what was handed over is not one listening Unix stream socket");
    }
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    return descriptor;
}

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) throw std::runtime_error(path + ": too long for a socket");
    path.copy(address.sun_path, path.size());
    return address;
}

const sockaddr* Generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

int NewSocket() {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0) throw std::runtime_error("cannot make a socket: " + GetSystemErrorText());
    return descriptor;
}

/// Whoever may still listen there holds no lock: another program, an instance of another mount, or a worker that serves
/// its last request after its parent was killed. Only a refusal says that nobody does; a socket of another kind or
/// another user's is alive for all one can tell.
bool SomebodyListens(const sockaddr_un& address) {
    const Descriptor asking(NewSocket());
    return connect(asking, Generic(address), sizeof address) == 0 ||
           (errno != ECONNREFUSED && errno != ENOENT);
}

/// Deletes the socket file of a dead process.
void MakeRoom(const sockaddr_un& address) {
    const std::string path = address.sun_path;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) return;
    if (!S_ISSOCK(status.st_mode)) throw std::runtime_error(path + ": there is something else than a socket");
    if (SomebodyListens(address)) throw std::runtime_error(path + ": another process listens there");
    unlink(path.c_str());
}

std::unique_ptr<LockFile> LockFor(const std::string& path) {
    try {
        return std::make_unique<LockFile>(path + ".lock", LockRetry{.attempts = 1, .pause = {}, .sleep = {}});
    } catch (const CVException& failure) {
        throw std::runtime_error(path + ": another instance has it, or its lock file cannot be made: " +
                                 failure.GetSystemMessage());
    }
}

}  // namespace

ListeningSocket::ListeningSocket(const std::string& path) : descriptor_(TakeHandedOver()) {
    if (descriptor_ < 0) Bind(path);
}

void ListeningSocket::Bind(const std::string& path) {
    const sockaddr_un address = AddressOf(path);
    auto lock = LockFor(path);
    MakeRoom(address);
    descriptor_ = NewSocket();
    const mode_t mask = umask(0777 & ~kOwnerAndGroup);
    const bool listens =
        bind(descriptor_, Generic(address), sizeof address) == 0 && listen(descriptor_, kBacklog) == 0;
    const std::string reason = GetSystemErrorText();
    umask(mask);
    if (!listens) {
        close(descriptor_);
        throw std::runtime_error(path + ": cannot listen: " + reason);
    }
    path_ = path;
    lock_ = std::move(lock);
}

ListeningSocket::~ListeningSocket() {
    Shut();
    close(descriptor_);
}

void ListeningSocket::Shut() {
    if (!IsOwn()) return;
    unlink(path_.c_str());
    shutdown(descriptor_, SHUT_RD);
    lock_.reset();
}

void HandOverToThisProcess() {
    setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    setenv("LISTEN_FDS", "1", 1);
}

}  // namespace quorbel
