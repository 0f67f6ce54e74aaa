#pragma once

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

namespace quorbel {

/// Asks for the record lock `type` (F_RDLCK, F_WRLCK) on a whole file with F_SETLK or F_SETLKW, or gives it
/// back (F_UNLCK), for this process. A signal does not end the wait. Returns 0, or -1 with `errno`.
inline int RequestRecordLock(int descriptor, int command, short type) {
    struct flock request = {};
    request.l_type = type;
    request.l_whence = SEEK_SET;
    for (;;) {
        const int result = fcntl(descriptor, command, &request);
        if (result == 0 || errno != EINTR) return result;
    }
}

}  // namespace quorbel
