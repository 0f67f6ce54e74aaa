#include "resident/RequestEnvironment.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace quorbel {

namespace {

/// What the program asks for.
constexpr std::string_view kRequestVariables[] = {
    "REQUEST_METHOD", "CONTENT_LENGTH", "HTTP_X_REQUEST_ID", "REMOTE_ADDR", "REMOTE_USER",
};

/// What is kept of the starter's: a proxy or a library's setting of whoever started the service would take commands,
/// passwords included, elsewhere.
constexpr std::string_view kKeptVariables[] = {
    "PATH", "HOME", "TMPDIR", "TZ", "LANG", "LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LC_TIME",
};

bool IsKept(std::string_view variable) {
    const std::string_view name = variable.substr(0, variable.find('='));
    return std::find(std::begin(kKeptVariables), std::end(kKeptVariables), name) != std::end(kKeptVariables);
}

}  // namespace

RequestEnvironment::RequestEnvironment() {
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (IsKept(*variable)) started_.push_back(*variable);
    }
    Publish();
}

void RequestEnvironment::Enter(const ScgiHeader& header) {
    request_.clear();
    for (const std::string_view name : kRequestVariables) {
        const char* value = header.Find(name);
        if (value != nullptr) request_.push_back(std::string(name).append("=").append(value));
    }
    Publish();
}

void RequestEnvironment::Leave() {
    request_.clear();
    Publish();
}

void RequestEnvironment::Publish() {
    pointers_ = started_;
    for (std::string& variable : request_) pointers_.push_back(variable.data());
    pointers_.push_back(nullptr);
    environ = pointers_.data();
}

}  // namespace quorbel
