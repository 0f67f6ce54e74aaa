#pragma once

#include <memory>
#include <string>
#include <vector>

namespace quorbel {

/// What a loopback server answers to every post.
struct LoopbackReply {
    std::string body = "OK\r\n";
    int status = 200;
    std::size_t missing = 0;    ///< bytes that are announced beyond the body and never sent
    std::string location = {};  ///< a Location header when not empty
};

/// One post as it reached the server.
struct LoopbackPost {
    std::string target;
    std::string body;  ///< of a multipart form: "name=value" parts, then "attach:<file name>=<content>"
    std::string contentType;
    std::string userAgent;
    std::string version;
    bool expects = false;  ///< carried an Expect header
};

/// A web server of its own on a free port of 127.0.0.1, for one test.
class LoopbackServer {
public:
    explicit LoopbackServer(LoopbackReply reply = {});
    ~LoopbackServer();

    std::string Url() const;
    std::vector<LoopbackPost> Posts() const;
    std::vector<std::string> Bodies() const;

private:
    struct Running;
    std::unique_ptr<Running> running_;
};

/// An address of this machine where nobody listens.
std::string DeadUrl();

}  // namespace quorbel
