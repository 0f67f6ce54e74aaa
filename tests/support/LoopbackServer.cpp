#include "tests/support/LoopbackServer.h"

#include <utility>

namespace quorbel {

LoopbackServer::LoopbackServer(HttpReply reply)
    : reply_(std::move(reply)), server_([this](const HttpPost& post) { return Take(post); }) {
    port_ = server_.Bind(0);
    server_.Start();
}

HttpReply LoopbackServer::Take(HttpPost post) {
    for (const auto& part : post.parts) {
        post.body += part.name + (part.fileName.empty() ? "" : ":" + part.fileName) + "=";
        post.body += part.content + "\n";
    }
    const std::lock_guard guard(mutex_);
    posts_.push_back(std::move(post));
    return reply_;
}

std::string LoopbackServer::Url() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/cmd";
}

std::vector<HttpPost> LoopbackServer::Posts() const {
    const std::lock_guard guard(mutex_);
    return posts_;
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
