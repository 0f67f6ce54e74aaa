#include "CVioSocket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "CVException.h"
#include "CVconThread.h"
#include "NoCancellation.h"
#include "src/Descriptor.h"

using namespace quorbel;

namespace {

using Milliseconds = CVioSocket::Milliseconds;
using Clock = std::chrono::steady_clock;

[[noreturn]] void RaiseSocketFailure(int line, const std::string& peer, const char* message,
                                     const std::string& reason) {
    throw CVioException(peer, "CVioSocket", line, message, reason);
}

[[noreturn]] void RaiseSocketFailure(int line, const std::string& peer, const char* message) {
    RaiseSocketFailure(line, peer, message, GetSystemErrorText());
}

/// The time that a call may still take.
class Deadline {
public:
    explicit Deadline(Milliseconds limit)
        : end_(Clock::now() + std::clamp(limit, Milliseconds(0), Milliseconds(kLongest))) {}

    Milliseconds Left() const {
        return std::max(Milliseconds(0), std::chrono::ceil<Milliseconds>(end_ - Clock::now()));
    }
    /// For one of `shares` attempts that are to fit in.
    Deadline Part(std::size_t shares) const {
        return Deadline(Left() / static_cast<Milliseconds::rep>(std::max<std::size_t>(shares, 1)));
    }
    /// The length of the next wait: short, so that a kill is noticed where the thread cannot be ended.
    Milliseconds Slice() const { return std::min(Left(), Milliseconds(100)); }

private:
    static constexpr std::chrono::hours kLongest{24 * 365};

    Clock::time_point end_;
};

bool MayGoOn(const Deadline& deadline) {
    errno = CVconThread::KillRequested() ? EINTR : ETIMEDOUT;
    return errno != EINTR && deadline.Left() > Milliseconds(0);
}

/// Waits until the descriptor is ready; false with `errno`. A thread may end here and nowhere else.
bool WaitUntil(short ready, int descriptor, const Deadline& deadline) {
    do {
        pollfd wanted = {descriptor, ready, 0};
        const int count = poll(&wanted, 1, static_cast<int>(deadline.Slice().count()));
        if (count > 0) return true;
        if (count < 0 && errno != EINTR) return false;
    } while (MayGoOn(deadline));
    return false;
}

/// Repeats a call that does not block until it is done.
template <class Call>
ssize_t WhenReady(short ready, int descriptor, const Deadline& deadline, Call call) {
    for (;;) {
        {
            const NoCancellation shield;
            const ssize_t result = call();
            if (result >= 0 || (errno != EAGAIN && errno != EINTR)) return result;
        }
        if (!WaitUntil(ready, descriptor, deadline)) return -1;
    }
}

int NewSocket(const addrinfo& address) {
    return socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
}

struct FreeAddresses {
    void operator()(addrinfo* list) const noexcept { freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

/// One question to the name service, asked by a thread of the C library, which cannot always be stopped: it
/// then keeps the question.
struct Question {
    std::string host, port;
    addrinfo hints = {};
    gaicb request = {};
    gaicb* list[1] = {&request};

    Question(const std::string& name, const std::string& service, int flags) : host(name), port(service) {
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_flags = flags;
        request.ar_name = host.empty() ? nullptr : host.c_str();
        request.ar_service = port.c_str();
        request.ar_request = &hints;
    }
};

struct AbandonQuestion {
    void operator()(Question* question) const noexcept {
        const NoCancellation shield;
        if (gai_error(&question->request) == EAI_INPROGRESS &&
            gai_cancel(&question->request) == EAI_NOTCANCELED) {
            return;
        }
        if (question->request.ar_result != nullptr) freeaddrinfo(question->request.ar_result);
        delete question;
    }
};

/// EAI code of the answer; EAI_SYSTEM with `errno` when there was none in time.
int Ask(Question& question, const Deadline& deadline) {
    if (const int code = getaddrinfo_a(GAI_NOWAIT, question.list, 1, nullptr); code != 0) return code;
    do {
        const auto slice = deadline.Slice().count();
        const timespec wait = {slice / 1000, slice % 1000 * 1'000'000};
        gai_suspend(question.list, 1, &wait);
        if (const int code = gai_error(&question.request); code != EAI_INPROGRESS) return code;
    } while (MayGoOn(deadline));
    return EAI_SYSTEM;
}

/// Null unless `host` is an address, or empty: no name service is asked.
Addresses Numeric(const std::string& host, const std::string& port, int flags) {
    const Question question(host, port, flags | AI_NUMERICHOST);
    addrinfo* found = nullptr;
    const int code = getaddrinfo(question.request.ar_name, port.c_str(), &question.hints, &found);
    return Addresses(code == 0 ? found : nullptr);
}

Addresses Resolve(const std::string& host, const std::string& port, int flags, const Deadline& deadline,
                  const std::string& peer, const char* failure) {
    if (Addresses addresses = Numeric(host, port, flags)) return addresses;
    const std::unique_ptr<Question, AbandonQuestion> question(new Question(host, port, flags));
    const int code = Ask(*question, deadline);
    if (code == EAI_SYSTEM) RaiseSocketFailure(__LINE__, peer, failure);
    if (code != 0) RaiseSocketFailure(__LINE__, peer, failure, gai_strerror(code));
    return Addresses(std::exchange(question->request.ar_result, nullptr));
}

std::string Endpoint(const std::string& host, const std::string& port) {
    const bool isIpV6 = host.find(':') != std::string::npos;
    return (isIpV6 ? "[" + host + "]" : host) + ":" + port;
}

using NameCall = int (*)(int, sockaddr*, socklen_t*);

/// The numeric address that `call` (getpeername, getsockname) tells.
std::string AddressOf(int descriptor, NameCall call) {
    sockaddr_storage address = {};
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    char host[NI_MAXHOST] = "?";
    char port[NI_MAXSERV] = "?";
    if (call(descriptor, generic, &length) == 0) {
        getnameinfo(generic, length, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
    }
    return Endpoint(host, port);
}

bool ConnectTo(int descriptor, const addrinfo& address, const Deadline& deadline) {
    {
        const NoCancellation shield;
        if (connect(descriptor, address.ai_addr, address.ai_addrlen) == 0) return true;
    }
    if (errno != EINPROGRESS || !WaitUntil(POLLOUT, descriptor, deadline)) return false;
    int code = 0;
    socklen_t length = sizeof code;
    getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &code, &length);
    errno = code;
    return code == 0;
}

std::size_t Count(const addrinfo* address) {
    std::size_t count = 0;
    for (; address != nullptr; address = address->ai_next) ++count;
    return count;
}

/// -1 with `errno` for an address that cannot be used.
int ListenOn(const addrinfo& address) {
    const NoCancellation shield;
    Descriptor own(NewSocket(address));
    const int on = 1;
    const int off = 0;
    setsockopt(own, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (address.ai_family == AF_INET6) setsockopt(own, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
    if (bind(own, address.ai_addr, address.ai_addrlen) != 0) return -1;
    return listen(own, SOMAXCONN) == 0 ? own.Release() : -1;
}

}  // namespace

void CVioSocket::Connect(const std::string& host, const std::string& port, Milliseconds limit) {
    constexpr const char* kFailure = "Socket Connect Failed";
    if (IsOpen()) {
        errno = EISCONN;
        RaiseSocketFailure(__LINE__, peer_, "Socket Was Already Open");
    }
    const Deadline deadline(limit);
    peer_ = Endpoint(host, port);
    const Addresses addresses = Resolve(host, port, 0, deadline, peer_, kFailure);
    std::size_t left = Count(addresses.get());
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next, --left) {
        Descriptor own(NewSocket(*address));
        if (own >= 0 && ConnectTo(own, *address, deadline.Part(left))) {
            descriptor_ = own.Release();
            return;
        }
    }
    RaiseSocketFailure(__LINE__, peer_, kFailure);
}

void CVioSocket::Close() noexcept {
    CloseKeepingErrno(std::exchange(descriptor_, -1));
}

std::size_t CVioSocket::Read(void* buffer, std::size_t size, Milliseconds limit) {
    const ssize_t count =
        WhenReady(POLLIN, descriptor_, Deadline(limit), [&] { return recv(descriptor_, buffer, size, 0); });
    if (count < 0) RaiseSocketFailure(__LINE__, peer_, "Socket Read Failed");
    const auto length = static_cast<std::size_t>(count);
    if (trace_ && length > 0) trace_("=> %s", {static_cast<const char*>(buffer), length});
    return length;
}

void CVioSocket::Write(std::string_view bytes, Milliseconds limit) {
    const Deadline deadline(limit);
    for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t count = WhenReady(POLLOUT, descriptor_, deadline, [&] {
            return send(descriptor_, rest.data(), rest.size(), MSG_NOSIGNAL);
        });
        if (count < 0) RaiseSocketFailure(__LINE__, peer_, "Socket Write Failed");
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    if (trace_ && !bytes.empty()) trace_("<= %s", bytes);
}

CVioListener::CVioListener(const std::string& host, const std::string& port)
    : address_(Endpoint(host, port)) {
    constexpr const char* kFailure = "Socket Listen Failed";
    constexpr std::chrono::seconds kLimit{30};
    const Addresses addresses = Resolve(host, port, AI_PASSIVE, Deadline(kLimit), address_, kFailure);
    // Of every address, the one of IPv6 serves both kinds.
    for (const int family : {AF_INET6, AF_INET}) {
        for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
            if (descriptor_ < 0 && address->ai_family == family) descriptor_ = ListenOn(*address);
        }
    }
    if (descriptor_ < 0) RaiseSocketFailure(__LINE__, address_, kFailure);
    address_ = AddressOf(descriptor_, getsockname);
}

CVioListener::~CVioListener() {
    CloseKeepingErrno(descriptor_);
}

int CVioListener::GetPort() const {
    return std::atoi(address_.substr(address_.rfind(':') + 1).c_str());
}

std::unique_ptr<CVioSocket> CVioListener::Accept(Milliseconds limit, CVioSocket::Trace trace) {
    auto connection = std::make_unique<CVioSocket>(std::move(trace));
    const Deadline deadline(limit);
    const ssize_t result = WhenReady(POLLIN, descriptor_, deadline, [&]() -> ssize_t {
        connection->descriptor_ = accept4(descriptor_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (connection->descriptor_ < 0 && errno == ECONNABORTED) errno = EAGAIN;  // gone again: the next one
        return connection->descriptor_;
    });
    if (result < 0) RaiseSocketFailure(__LINE__, address_, "Socket Accept Failed");
    connection->peer_ = AddressOf(connection->descriptor_, getpeername);
    return connection;
}
