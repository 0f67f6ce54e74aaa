#include "resident/ProgramStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "resident/ListeningSocket.h"

namespace quorbel {

namespace fs = std::filesystem;

ProgramStart::ProgramStart(char** argv) {
    std::error_code unknown;
    file_ = fs::read_symlink("/proc/self/exe", unknown);
    directory_ = fs::current_path(unknown);
    for (; *argv != nullptr; ++argv) words_.emplace_back(*argv);
}

void ProgramStart::Repeat() {
    std::vector<char*> arguments;
    for (std::string& word : words_) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(file_.c_str(), arguments.data());
}

void ProgramStart::RepeatWith(int listening) {
    std::error_code unknown;
    const fs::path here = fs::current_path(unknown);
    fs::current_path(directory_, unknown);  // names on the command line may be relative to it
    fcntl(listening, F_SETFD, 0);
    HandOverToThisProcess();
    Repeat();
    fcntl(listening, F_SETFD, FD_CLOEXEC);
    fs::current_path(here, unknown);
}

}  // namespace quorbel
