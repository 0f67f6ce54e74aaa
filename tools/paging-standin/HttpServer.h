#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {

/// One part of a multipart form; a file has a name of its own.
struct HttpPart {
    std::string name;
    std::string fileName;
    std::string content;
};

/// One post as it reached the server.
struct HttpPost {
    std::string target;
    std::string body;             ///< empty for a multipart form
    std::vector<HttpPart> parts;  ///< of a multipart form
    std::string contentType;
    std::string userAgent;
    std::string authorization;
    std::string version;
    bool expects = false;  ///< carried an Expect header
};

struct HttpReply {
    std::string body = "OK\r\n";
    int status = 200;
    std::size_t missing = 0;    ///< bytes that are announced beyond the body and never sent
    std::string location = {};  ///< a Location header when not empty
};

/// A web server on 127.0.0.1, with threads of its own: what `reply` makes of a post to any path is the
/// answer. `reply` is called from several threads at once.
class HttpServer {
public:
    explicit HttpServer(std::function<HttpReply(const HttpPost&)> reply);
    /// Waits for replies that are being made.
    ~HttpServer();

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Binds the port and returns it; 0 asks for a free one. Throws std::runtime_error when it is taken.
    int Bind(int port);
    /// Takes posts from now on. To be called once, after Bind.
    void Start();

private:
    struct Running;
    std::unique_ptr<Running> running_;
};

}  // namespace quorbel
