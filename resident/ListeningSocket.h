#pragma once

#include <memory>
#include <string>

#include "LockFile.h"

namespace quorbel {

/// The Unix stream socket on which requests arrive; it does not block.
///
/// A socket of its own is made at a path, for the owner and the group, and kept from other instances by the lock file
/// beside it; a socket file that a dead process left is replaced. A socket that was handed over by whoever started the
/// process stays with them.
class ListeningSocket {
public:
    /// The one that was handed over, else a new one at `path`. Throws std::runtime_error, its text for an operator:
    /// somebody listens there, the path is too long, is something else, or cannot be made.
    explicit ListeningSocket(const std::string& path);
    ~ListeningSocket();

    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int Descriptor() const { return descriptor_; }
    bool IsOwn() const { return lock_ != nullptr; }
    /// Takes no new connections; those in the queue stay there, and the path is free for another instance. Does nothing
    /// for a socket that was handed over.
    void Shut();

private:
    void Bind(const std::string& path);

    int descriptor_ = -1;
    std::string path_;
    std::unique_ptr<LockFile> lock_;
};

/// Tells the program that this process runs next that it is handed the socket that this one was handed.
void HandOverToThisProcess();

}  // namespace quorbel
