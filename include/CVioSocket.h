#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "CVobject.h"

/// A TCP connection over IPv4 or IPv6.
///
/// Every call takes the longest time that it may last. Failures are CVioExceptions of the unit "CVioSocket"
/// that carry the peer ("host:port", "[::1]:80"); one that ran out of time has the text of ETIMEDOUT, one whose
/// thread was killed that of EINTR. Where cancellation is on, a kill ends the thread within the call. A failed
/// call leaves the connection as it is; after a failed Write it is unknown how much the peer received.
///
/// One thread reads and one writes at a time. Programs that are started do not inherit the connection; a child
/// process shares it, so that only one of the two should go on using it.
class CVioSocket : public CVobject {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// Gets all bytes as they go, with "=> %s" for what was read and "<= %s" for what was written. May be
    /// called from two threads at once. Must not throw.
    using Trace = std::function<void(const char* format, std::string_view bytes)>;

    /// Connects nothing.
    explicit CVioSocket(Trace trace = {}) : trace_(std::move(trace)) {}
    ~CVioSocket() override { Close(); }

    CVioSocket(const CVioSocket&) = delete;
    CVioSocket& operator=(const CVioSocket&) = delete;

    /// `host` is a name or an address, `port` a number or the name of a service. Tries each address of the host.
    /// Throws "Socket Was Already Open", "Socket Connect Failed".
    void Connect(const std::string& host, const std::string& port, Milliseconds limit);
    void Close() noexcept;
    bool IsOpen() const { return descriptor_ >= 0; }
    const std::string& GetPeer() const { return peer_; }

    /// Waits for the first bytes and returns how many came, at most `size`; 0 when the peer has ended. Throws
    /// "Socket Read Failed".
    std::size_t Read(void* buffer, std::size_t size, Milliseconds limit);
    /// Hands all of it to the kernel. Throws "Socket Write Failed".
    void Write(std::string_view bytes, Milliseconds limit);

private:
    friend class CVioListener;

    Trace trace_;
    std::string peer_;
    int descriptor_ = -1;
};

/// Accepts TCP connections on one port of this machine. Errors, threads and forks as for CVioSocket, with the
/// own address as the I/O path.
class CVioListener : public CVobject {
public:
    /// Listens at once. An empty host stands for every address of the machine, port "0" for a free one. Throws
    /// "Socket Listen Failed".
    CVioListener(const std::string& host, const std::string& port);
    ~CVioListener() override;

    CVioListener(const CVioListener&) = delete;
    CVioListener& operator=(const CVioListener&) = delete;

    const std::string& GetAddress() const { return address_; }
    /// The port's number.
    int GetPort() const;
    /// The next connection. Throws "Socket Accept Failed", also when none comes in time.
    std::unique_ptr<CVioSocket> Accept(CVioSocket::Milliseconds limit, CVioSocket::Trace trace = {});

private:
    std::string address_;
    int descriptor_ = -1;
};
