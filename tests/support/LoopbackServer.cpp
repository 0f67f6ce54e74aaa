#include "tests/support/LoopbackServer.h"

#include <httplib.h>

#include <mutex>
#include <thread>

namespace quorbel {

struct LoopbackServer::Running {
    LoopbackReply reply;
    httplib::Server server;
    int port = 0;
    std::thread thread;
    mutable std::mutex mutex;
    std::vector<LoopbackPost> posts;

    void Take(const httplib::Request& request, std::string body) {
        const std::lock_guard guard(mutex);
        posts.push_back({request.target, std::move(body), request.get_header_value("Content-Type"),
                         request.get_header_value("User-Agent"), request.version,
                         request.has_header("Expect")});
    }

    void Answer(httplib::Response& response) const {
        response.status = reply.status;
        if (!reply.location.empty()) response.set_header("Location", reply.location);
        if (reply.missing == 0) {
            response.set_content(reply.body, "text/plain");
            return;
        }
        response.set_content_provider(reply.body.size() + reply.missing, "text/plain",
                                      [this](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                          if (offset >= reply.body.size())
                                              return false;  // ends the connection short of the promise
                                          return sink.write(reply.body.data() + offset,
                                                            reply.body.size() - offset);
                                      });
    }
};

namespace {

std::string ReadForm(const httplib::ContentReader& content) {
    std::string form;
    content(
        [&](const httplib::MultipartFormData& part) {
            form += part.name + (part.filename.empty() ? "" : ":" + part.filename) + "=";
            return true;
        },
        [&](const char* data, std::size_t length) {
            form.append(data, length) += '\n';
            return true;
        });
    return form;
}

std::string ReadBody(const httplib::ContentReader& content) {
    std::string body;
    content([&](const char* data, std::size_t length) {
        body.append(data, length);
        return true;
    });
    return body;
}

}  // namespace

LoopbackServer::LoopbackServer(LoopbackReply reply) : running_(std::make_unique<Running>()) {
    running_->reply = std::move(reply);
    running_->server.set_keep_alive_max_count(1);
    running_->server.Post(".*", [this](const httplib::Request& request, httplib::Response& response,
                                       const httplib::ContentReader& content) {
        running_->Take(request, request.is_multipart_form_data() ? ReadForm(content) : ReadBody(content));
        running_->Answer(response);
    });
    running_->port = running_->server.bind_to_any_port("127.0.0.1");
    running_->thread = std::thread([this] { running_->server.listen_after_bind(); });
    while (!running_->server.is_running()) std::this_thread::yield();
}

LoopbackServer::~LoopbackServer() {
    running_->server.stop();
    running_->thread.join();
}

std::string LoopbackServer::Url() const {
    return "http://127.0.0.1:" + std::to_string(running_->port) + "/cmd";
}

std::vector<LoopbackPost> LoopbackServer::Posts() const {
    const std::lock_guard guard(running_->mutex);
    return running_->posts;
}

std::vector<std::string> LoopbackServer::Bodies() const {
    std::vector<std::string> bodies;
    for (const auto& post : Posts()) bodies.push_back(post.body);
    return bodies;
}

std::string DeadUrl() {
    // Port 1 is never handed out as a free port, and nothing serves it on a test machine.
    return "http://127.0.0.1:1/cmd";
}

}  // namespace quorbel
