#include <pthread.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>

#include "tools/operator/CommandLine.h"
#include "tools/paging-standin/PagingServer.h"

namespace {

struct Options {
    std::int64_t port = 0;
    std::string portFile;
    std::int64_t delay = 0;
    std::int64_t status = 200;
    std::string replyFile;
    bool cut = false;
};

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw quorbel::UsageError("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Renamed into place: whoever waits for the file finds it whole.
void WritePort(const std::string& path, int port) {
    const std::string unfinished = path + ".new";
    std::ofstream file(unfinished);
    if (!(file << port << '\n').flush()) throw std::runtime_error("cannot write " + unfinished);
    std::filesystem::rename(unfinished, path);
}

standin::SimulatedFailure FailureOf(const Options& options) {
    standin::SimulatedFailure failure = {.delay = std::chrono::milliseconds(options.delay),
                                         .status = static_cast<int>(options.status),
                                         .cut = options.cut};
    if (!options.replyFile.empty()) failure.reply = ReadWhole(options.replyFile);
    return failure;
}

// Before any thread starts, so that all of them leave the signals to sigwait.
sigset_t BlockEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void Run(const Options& options) {
    const sigset_t signals = BlockEndSignals();
    standin::PagingServer server(FailureOf(options), std::cout);
    const int port = server.Start(static_cast<int>(options.port));
    if (!options.portFile.empty()) WritePort(options.portFile, port);

    int received = 0;
    sigwait(&signals, &received);
}

}  // namespace

int main(int argc, char** argv) {
    using quorbel::NumberTarget;
    Options options;
    const quorbel::CommandLine line = {
        .name = "paging-standin",
        .help =
            "A stand-in for demos and tests, no paging server: it takes the server's commands over HTTP, "
            "keeps in memory what they tell, answers them and prints each one. It pages nobody.",
        .options =
            {
                {"--port", "N", "Port on 127.0.0.1; 0 takes a free one",
                 NumberTarget{&options.port, 0, 65535}},
                {"--port-file", "FILE", "Write the port into this file once connections are taken",
                 &options.portFile},
                {"--delay", "MS", "Wait this many milliseconds before each answer",
                 NumberTarget{&options.delay, 0, std::numeric_limits<std::int32_t>::max()}},
                {"--status", "N", "HTTP status of every answer", NumberTarget{&options.status, 200, 599}},
                {"--reply", "FILE", "Answer every command with this file, without executing it",
                 &options.replyFile},
                {"--cut", "", "Announce a longer answer than is sent, then close", &options.cut},
            },
        .commands = {},
        .run = [&] { Run(options); },
    };
    return quorbel::RunTool(line, argc, argv);
}
