#include "tools/paging-standin/PagingServer.h"

#include <httplib.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "tools/paging-standin/Form.h"
#include "tools/paging-standin/Store.h"

namespace standin {
namespace {

constexpr char kAddress[] = "127.0.0.1";
constexpr char kGreeting[] = "paging-standin: a stand-in for demos and tests, no paging server,";
constexpr char kTextType[] = "text/plain";
constexpr std::size_t kAnnouncedButNotSent = 100;

// The library's own form parser forgets the order of the pairs and refuses bodies over 8 KB.
Pairs ReadUrlencoded(const httplib::ContentReader& read) {
    std::string body;
    read([&](const char* data, std::size_t size) {
        body.append(data, size);
        return true;
    });
    return ParseForm(body);
}

// A file counts by its name and size.
std::string PartValue(const httplib::MultipartFormData& part) {
    if (part.filename.empty()) return part.content;
    return "@" + part.filename + " (" + std::to_string(part.content.size()) + " bytes)";
}

Pairs ReadMultipart(const httplib::ContentReader& read) {
    std::vector<httplib::MultipartFormData> parts;
    read(
        [&](const httplib::MultipartFormData& part) {
            parts.push_back(part);
            return true;
        },
        [&](const char* data, std::size_t size) {
            parts.back().content.append(data, size);
            return true;
        });

    Pairs pairs;
    for (const auto& part : parts) pairs.emplace_back(part.name, PartValue(part));
    return pairs;
}

std::string Describe(const std::string& target, const Pairs& command, const std::string& answer) {
    std::string text = "POST " + OneLine(target) + "\n";
    for (const auto& [name, value] : command) text += "  " + OneLine(name) + "=" + OneLine(value) + "\n";
    return text + "  -> " + OneLine(answer.substr(0, answer.find('\r'))) + "\n";
}

void CutAnswer(httplib::Response& response, const std::string& answer) {
    response.set_content_provider(answer.size() + kAnnouncedButNotSent, kTextType,
                                  [answer](std::size_t, std::size_t, httplib::DataSink& sink) {
                                      sink.write(answer.data(), answer.size());
                                      return false;
                                  });
}

}  // namespace

class PagingServer::Impl {
public:
    Impl(Misbehaviour misbehaviour, std::ostream& log) : misbehaviour_(std::move(misbehaviour)), log_(log) {
        server_.set_keep_alive_max_count(1);  // an idle client must not hold up the end
        // The library's default lets two servers share one port.
        server_.set_socket_options([](int socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        server_.Post(".*", [this](const httplib::Request& request, httplib::Response& response,
                                  const httplib::ContentReader& read) { Serve(request, response, read); });
    }

    ~Impl() {
        if (!listener_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        stop_.notify_all();
        server_.stop();
        listener_.join();
    }

    int Start(int port) {
        const int bound = Bind(port);
        if (bound < 0) throw std::runtime_error("cannot listen on port " + std::to_string(port));
        log_ << kGreeting << " on http://" << kAddress << ":" << bound << "/" << std::endl;
        listener_ = std::thread([this] { server_.listen_after_bind(); });
        // A stop before the listener runs would go unheard.
        while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return bound;
    }

private:
    int Bind(int port) {
        if (port == 0) return server_.bind_to_any_port(kAddress);
        return server_.bind_to_port(kAddress, port) ? port : -1;
    }

    void Serve(const httplib::Request& request, httplib::Response& response,
               const httplib::ContentReader& read) {
        const Pairs command = request.is_multipart_form_data() ? ReadMultipart(read) : ReadUrlencoded(read);
        std::unique_lock lock(mutex_);
        const std::string answer =
            misbehaviour_.reply ? *misbehaviour_.reply : store_.Execute(command).ToText();
        log_ << Describe(request.target, command, answer) << std::flush;
        stop_.wait_for(lock, misbehaviour_.delay, [this] { return stopping_; });

        response.status = misbehaviour_.status;
        if (misbehaviour_.cut) return CutAnswer(response, answer);
        response.set_content(answer, kTextType);
    }

    const Misbehaviour misbehaviour_;
    std::ostream& log_;
    httplib::Server server_;
    std::thread listener_;
    std::mutex mutex_;  // guards everything below, and log_
    std::condition_variable stop_;
    Store store_;
    bool stopping_ = false;
};

PagingServer::PagingServer(Misbehaviour misbehaviour, std::ostream& log)
    : impl_(std::make_unique<Impl>(std::move(misbehaviour), log)) {}

PagingServer::~PagingServer() = default;

int PagingServer::Start(int port) {
    return impl_->Start(port);
}

}  // namespace standin
