#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tools/paging-standin/HttpServer.h"

namespace quorbel {

/// A web server of its own on a free port of 127.0.0.1, for one test: records what it is sent. The body of a
/// multipart form is recorded as a line for each part: "name=content", "attach:<file name>=<content>".
class LoopbackServer {
public:
    explicit LoopbackServer(HttpReply reply = {});

    std::string Url() const;
    std::vector<HttpPost> Posts() const;
    std::vector<std::string> Bodies() const;

private:
    HttpReply Take(HttpPost post);

    const HttpReply reply_;
    mutable std::mutex mutex_;  // guards posts_
    std::vector<HttpPost> posts_;
    HttpServer server_;  // the first to go: its threads use all the others
    int port_ = 0;
};

/// An address of this machine where nobody listens.
std::string DeadUrl();

}  // namespace quorbel
