#include <CLI/CLI.hpp>

#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tools/paging-standin/PagingServer.h"

namespace {

struct Options {
    int port = 0;
    std::string portFile;
    int delay = 0;
    std::string replyFile;
    standin::Misbehaviour misbehaviour;
};

void Declare(CLI::App& app, Options& options) {
    app.add_option("--port", options.port, "Port on 127.0.0.1; 0 takes a free one")
        ->check(CLI::Range(0, 65535));
    app.add_option("--port-file", options.portFile,
                   "Write the port into this file once connections are taken");
    app.add_option("--delay", options.delay, "Wait this many milliseconds before each answer")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--status", options.misbehaviour.status, "HTTP status of every answer")
        ->check(CLI::Range(200, 599));
    app.add_option("--reply", options.replyFile, "Answer every command with this file, without executing it")
        ->check(CLI::ExistingFile);
    app.add_flag("--cut", options.misbehaviour.cut, "Announce a longer answer than is sent, then close");
    app.set_version_flag("--version", "paging-standin " QUORBEL_VERSION);
}

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Renamed into place: whoever waits for the file finds it whole.
void WritePort(const std::string& path, int port) {
    const std::string unfinished = path + ".new";
    std::ofstream file(unfinished);
    if (!(file << port << '\n').flush()) throw std::runtime_error("cannot write " + unfinished);
    std::filesystem::rename(unfinished, path);
}

void RunUntil(const sigset_t& signals, Options options) {
    options.misbehaviour.delay = std::chrono::milliseconds(options.delay);
    if (!options.replyFile.empty()) options.misbehaviour.reply = ReadWhole(options.replyFile);

    standin::PagingServer server(options.misbehaviour, std::cout);
    const int port = server.Start(options.port);
    if (!options.portFile.empty()) WritePort(options.portFile, port);

    int received = 0;
    sigwait(&signals, &received);
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

int Main(int argc, char** argv) {
    CLI::App app{
        "A stand-in for demos and tests, no paging server: it takes the server's commands over HTTP, keeps "
        "in "
        "memory what they tell, answers them and prints each one. It pages nobody.",
        "paging-standin"};
    Options options;
    Declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    RunUntil(BlockEndSignals(), options);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "paging-standin: %s\n", error.what());
        return 1;
    }
}
