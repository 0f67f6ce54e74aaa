#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace standin {

/// What a client must be able to live with. The command is carried out and printed all the same, unless a
/// reply is given.
struct Misbehaviour {
    std::chrono::milliseconds delay{0};
    int status = 200;
    std::optional<std::string> reply = {};  // sent to every command, which is then not carried out
    bool cut = false;                       // announce more bytes than are sent, then close the connection
};

/// Answers the paging server's command interface on the loopback address, on threads of its own: any POST to
/// any path is one command. Ends its threads when it goes, a delayed answer included.
class PagingServer {
public:
    /// Each command is written to `log` and flushed, by this object alone as long as it lives.
    PagingServer(Misbehaviour misbehaviour, std::ostream& log);
    ~PagingServer();

    PagingServer(const PagingServer&) = delete;
    PagingServer& operator=(const PagingServer&) = delete;

    /// Listens and returns the port; 0 asks for a free one. Throws std::runtime_error when it is taken.
    int Start(int port);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace standin
