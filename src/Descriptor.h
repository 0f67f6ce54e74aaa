#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "NoCancellation.h"

namespace quorbel {

/// Closes unless it is negative; errno stays as it is, for whoever reports the failure before.
inline void CloseKeepingErrno(int descriptor) noexcept {
    const NoCancellation shield;
    const int code = errno;
    if (descriptor >= 0) close(descriptor);
    errno = code;
}

/// Owns a descriptor, or a negative number for none: closed at the end unless it is handed on.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { CloseKeepingErrno(number_); }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    operator int() const { return number_; }
    int Release() { return std::exchange(number_, -1); }

private:
    int number_;
};

}  // namespace quorbel
