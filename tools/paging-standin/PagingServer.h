#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>

#include "tools/paging-standin/HttpServer.h"
#include "tools/paging-standin/Store.h"

namespace standin {

/// Failures that a client must be able to live with. The command is carried out and printed all the same,
/// unless a reply is given.
struct SimulatedFailure {
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
    PagingServer(SimulatedFailure failure, std::ostream& log);
    ~PagingServer();

    /// Listens and returns the port; 0 asks for a free one. Throws std::runtime_error when it is taken.
    int Start(int port);

private:
    quorbel::HttpReply Serve(const quorbel::HttpPost& post);

    const SimulatedFailure failure_;
    std::ostream& log_;
    std::mutex mutex_;  // guards everything between here and http_, and log_
    std::condition_variable stop_;
    Store store_;
    bool stopping_ = false;
    quorbel::HttpServer http_;  // the first to go: its threads use all the others
};

}  // namespace standin
