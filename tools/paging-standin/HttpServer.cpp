#include "tools/paging-standin/HttpServer.h"

#include <httplib.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace quorbel {

namespace {

constexpr char kAddress[] = "127.0.0.1";
constexpr char kTextType[] = "text/plain";

std::string ReadBody(const httplib::ContentReader& read) {
    std::string body;
    read([&](const char* data, std::size_t size) {
        body.append(data, size);
        return true;
    });
    return body;
}

std::vector<HttpPart> ReadParts(const httplib::ContentReader& read) {
    std::vector<HttpPart> parts;
    read(
        [&](const httplib::MultipartFormData& part) {
            parts.push_back({part.name, part.filename, {}});
            return true;
        },
        [&](const char* data, std::size_t size) {
            parts.back().content.append(data, size);
            return true;
        });
    return parts;
}

// The library's own form parser forgets the order of the pairs and refuses bodies over 8 KB.
HttpPost Read(const httplib::Request& request, const httplib::ContentReader& read) {
    HttpPost post = {.target = request.target,
                     .body = {},
                     .parts = {},
                     .contentType = request.get_header_value("Content-Type"),
                     .userAgent = request.get_header_value("User-Agent"),
                     .authorization = request.get_header_value("Authorization"),
                     .version = request.version,
                     .expects = request.has_header("Expect")};
    if (request.is_multipart_form_data()) {
        post.parts = ReadParts(read);
    } else {
        post.body = ReadBody(read);
    }
    return post;
}

void Send(HttpReply reply, httplib::Response& response) {
    response.status = reply.status;
    if (!reply.location.empty()) response.set_header("Location", reply.location);
    if (reply.missing == 0) return response.set_content(reply.body, kTextType);
    const std::size_t announced = reply.body.size() + reply.missing;
    response.set_content_provider(
        announced, kTextType,
        [body = std::move(reply.body)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            if (offset >= body.size()) return false;  // ends the connection short of the promise
            return sink.write(body.data() + offset, body.size() - offset);
        });
}

}  // namespace

struct HttpServer::Running {
    httplib::Server server;
    std::thread listener;
};

HttpServer::HttpServer(std::function<HttpReply(const HttpPost&)> reply)
    : running_(std::make_unique<Running>()) {
    auto& server = running_->server;
    server.set_keep_alive_max_count(1);  // an idle client must not hold up the end
    // The library's default lets two servers share one port.
    server.set_socket_options([](int socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.Post(".*", [reply = std::move(reply)](const httplib::Request& request, httplib::Response& response,
                                                 const httplib::ContentReader& read) {
        Send(reply(Read(request, read)), response);
    });
}

HttpServer::~HttpServer() {
    if (!running_->listener.joinable()) return;
    running_->server.stop();
    running_->listener.join();
}

int HttpServer::Bind(int port) {
    auto& server = running_->server;
    const int bound = port == 0                             ? server.bind_to_any_port(kAddress)
                      : server.bind_to_port(kAddress, port) ? port
                                                            : -1;
    if (bound < 0) throw std::runtime_error("cannot listen on port " + std::to_string(port));
    return bound;
}

void HttpServer::Start() {
    running_->listener = std::thread([this] { running_->server.listen_after_bind(); });
    // A stop before the listener runs would go unheard.
    while (!running_->server.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace quorbel
