#include "tools/paging-standin/PagingServer.h"

#include <utility>

#include "tools/paging-standin/Form.h"

namespace standin {
namespace {

constexpr char kGreeting[] = "paging-standin: a stand-in for demos and tests, no paging server,";
constexpr std::size_t kAnnouncedButNotSent = 100;

// A file counts by its name and size.
std::string PartValue(const quorbel::HttpPart& part) {
    if (part.fileName.empty()) return part.content;
    return "@" + part.fileName + " (" + std::to_string(part.content.size()) + " bytes)";
}

Pairs CommandOf(const quorbel::HttpPost& post) {
    Pairs command = ParseForm(post.body);
    for (const auto& part : post.parts) command.emplace_back(part.name, PartValue(part));
    return command;
}

std::string Describe(const std::string& target, const Pairs& command, const std::string& answer) {
    std::string text = "POST " + OneLine(target) + "\n";
    for (const auto& [name, value] : command) text += "  " + OneLine(name) + "=" + OneLine(value) + "\n";
    return text + "  -> " + OneLine(answer.substr(0, answer.find('\r'))) + "\n";
}

}  // namespace

PagingServer::PagingServer(SimulatedFailure failure, std::ostream& log)
    : failure_(std::move(failure)),
      log_(log),
      http_([this](const quorbel::HttpPost& post) { return Serve(post); }) {}

PagingServer::~PagingServer() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    stop_.notify_all();
}

int PagingServer::Start(int port) {
    const int bound = http_.Bind(port);
    log_ << kGreeting << " on http://127.0.0.1:" << bound << "/" << std::endl;
    http_.Start();
    return bound;
}

quorbel::HttpReply PagingServer::Serve(const quorbel::HttpPost& post) {
    const Pairs command = CommandOf(post);
    std::unique_lock lock(mutex_);
    const std::string answer = failure_.reply ? *failure_.reply : store_.Execute(command).ToText();
    log_ << Describe(post.target, command, answer) << std::flush;
    stop_.wait_for(lock, failure_.delay, [this] { return stopping_; });
    return {.body = answer, .status = failure_.status, .missing = failure_.cut ? kAnnouncedButNotSent : 0};
}

}  // namespace standin
