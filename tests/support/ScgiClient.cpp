#include "tests/support/ScgiClient.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "tests/support/Eventually.h"

namespace quorbel {

namespace {

int Connect(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval patience = {60, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    Eventually([&] {
        return connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    });
    return descriptor;
}

std::string Variable(const std::string& text) {
    const std::size_t equals = text.find('=');
    return text.substr(0, equals) + '\0' + text.substr(equals + 1) + '\0';
}

}  // namespace

std::string ScgiHeaderText(const std::vector<std::string>& variables, std::size_t bodySize) {
    std::string length = "CONTENT_LENGTH=" + std::to_string(bodySize);
    std::string others = Variable("SCGI=1");
    for (const auto& variable : variables) {
        if (variable.starts_with("CONTENT_LENGTH=")) {
            length = variable;
        } else {
            others += Variable(variable);
        }
    }
    const std::string content = Variable(length) + others;
    return std::to_string(content.size()) + ":" + content + ",";
}

ScgiClient::ScgiClient(const std::string& path) : descriptor_(Connect(path)) {}

ScgiClient::ScgiClient(ScgiClient&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

ScgiClient::~ScgiClient() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool ScgiClient::Send(const std::string& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) sent += static_cast<std::size_t>(count);
    }
    return true;
}

void ScgiClient::EndSending() const {
    shutdown(descriptor_, SHUT_WR);
}

std::string ScgiClient::Receive() const {
    std::string received;
    std::string piece(1 << 16, '\0');
    ssize_t count = 0;
    while ((count = recv(descriptor_, piece.data(), piece.size(), 0)) > 0) {
        received.append(piece, 0, static_cast<std::size_t>(count));
    }
    return received;
}

std::string AskByScgi(const std::string& path, const std::string& body,
                      const std::vector<std::string>& variables) {
    const ScgiClient client(path);
    client.Send(ScgiHeaderText(variables, body.size()) + body);
    client.EndSending();
    return client.Receive();
}

}  // namespace quorbel
