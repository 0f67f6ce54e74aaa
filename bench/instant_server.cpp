// instant_server PORT_FILE: a paging server on 127.0.0.1 that answers every post at once with one line, for measurements
// in which the server must cost as little as can be. Executes nothing; runs until it is killed.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kAnswer =
    "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 4\r\n\r\nOK\r\n";

int Listen(int& port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    const int seconds = 1;  // until a connection without a post is handed over all the same
    setsockopt(listener, IPPROTO_TCP, TCP_DEFER_ACCEPT, &seconds, sizeof seconds);
    if (bind(listener, generic, size) != 0 || listen(listener, 1024) != 0) std::abort();
    getsockname(listener, generic, &size);
    port = ntohs(address.sin_port);
    return listener;
}

bool IsComplete(std::string_view post) {
    constexpr std::string_view kLength = "Content-Length: ";
    const std::size_t end = post.find("\r\n\r\n");
    if (end == post.npos) return false;
    const std::size_t at = post.find(kLength);
    const long length = at < end ? std::atol(post.data() + at + kLength.size()) : 0;
    return post.size() >= end + 4 + static_cast<std::size_t>(length);
}

/// Answers a post that has arrived whole; false while it has not. Needs a descriptor less than the size of `posts`.
bool Read(int connection, std::vector<std::string>& posts) {
    char piece[16384];
    std::string& post = posts[static_cast<std::size_t>(connection)];
    const ssize_t count = recv(connection, piece, sizeof piece, MSG_DONTWAIT);
    if (count < 0 && errno == EAGAIN) return false;
    if (count > 0) post.append(piece, static_cast<std::size_t>(count));
    if (count > 0 && !IsComplete(post)) return false;
    if (count > 0 && write(connection, kAnswer.data(), kAnswer.size()) < 0) std::perror("write");
    close(connection);
    post.clear();
    return true;
}

void Watch(int events, int descriptor) {
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &event);
}

[[noreturn]] void Serve(int listener) {
    std::vector<std::string> posts(65536);
    const int events = epoll_create1(0);
    Watch(events, listener);
    for (epoll_event ready[64];;) {
        const int count = epoll_wait(events, ready, 64, -1);
        for (int i = 0; i < count; ++i) {
            if (ready[i].data.fd != listener) {
                Read(ready[i].data.fd, posts);
            } else if (const int connection = accept(listener, nullptr, nullptr); connection >= 0) {
                if (!Read(connection, posts)) Watch(events, connection);  // most come with their post
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    int port = 0;
    const int listener = Listen(port);
    std::FILE* file = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (file == nullptr) return 2;
    std::fprintf(file, "%d\n", port);
    std::fclose(file);
    Serve(listener);
}
