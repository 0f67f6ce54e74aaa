// The resident program: serves the requests that a web server passes on by SCGI, each in the same way as the CGI
// program.

#include <CLI/CLI.hpp>

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "CVException.h"
#include "process/HttpTransfer.h"
#include "process/ServeRequest.h"
#include "resident/Connection.h"
#include "resident/ListeningSocket.h"
#include "resident/ProgramStart.h"
#include "resident/Report.h"
#include "resident/Site.h"
#include "resident/Supervisor.h"
#include "resident/Worker.h"
#include "syslib/LogWaits.h"

using namespace quorbel;

namespace {

constexpr int kWrongUsage = 2;

struct Options {
    std::string site;
    std::string socket = "/run/quorbel/soapd.sock";
    SupervisorSettings supervisor;
    WorkerSettings worker;
    double headerTimeout = 10;
    double bodyTimeout = 60;
    bool checkOnly = false;
};

void Declare(CLI::App& app, Options& options) {
    const auto seconds = CLI::Range(0.001, 86400.0);
    app.add_option("--site", options.site, "The site's directory")->required()->type_name("DIR");
    app.add_option("--socket", options.socket, "Unix socket to make, unless one is handed over (LISTEN_FDS)")
        ->capture_default_str()
        ->type_name("PATH");
    app.add_option("--workers", options.supervisor.workers, "Workers at most")
        ->check(CLI::Range(1, 4096))
        ->capture_default_str();
    app.add_option("--spare", options.supervisor.spare, "Idle workers to keep ready")
        ->check(CLI::Range(1, 4096))
        ->capture_default_str();
    app.add_option("--requests-per-worker", options.worker.requests, "Requests before a worker is replaced")
        ->check(CLI::Range(1, 1000000000))
        ->capture_default_str();
    app.add_option("--header-timeout", options.headerTimeout, "Seconds for a request's header")
        ->check(seconds)
        ->capture_default_str();
    app.add_option("--body-timeout", options.bodyTimeout, "Seconds without a byte of a body or for an answer")
        ->check(seconds)
        ->capture_default_str();
    app.add_flag("--check", options.checkOnly, "Look at options and site, then exit");
    app.set_version_flag("--version", std::string(kServiceName) + " " QUORBEL_VERSION);
}

std::chrono::milliseconds Milliseconds(double seconds) {
    return std::chrono::milliseconds(static_cast<long>(seconds * 1000));
}

void Complete(Options& options) {
    if (options.supervisor.spare > options.supervisor.workers) {
        throw std::runtime_error("--spare is more than --workers");
    }
    options.worker.spare = options.supervisor.spare;
    options.worker.headerTimeout = Milliseconds(options.headerTimeout);
    options.worker.pause = Milliseconds(options.bodyTimeout);
}

/// Settings of the dynamic linker and of the C library that count at the start of a program only.
constexpr const char* kStartSettings[][2] = {
    // Otherwise each worker looks functions up again that it is the first to call, which takes as long as a request.
    {"LD_BIND_NOW", "1"},
    // Of the blocks of a size, seven are kept at hand by default: a request takes and frees more.
    {"GLIBC_TUNABLES", "glibc.malloc.tcache_count=64"},
};

/// Starts this program once more with these settings, unless it runs with them. Goes on when that is not possible.
void StartWithSettings(ProgramStart& start) {
    if (!start.IsKnown() || std::getenv(kStartSettings[0][0]) != nullptr) return;
    for (const auto& [name, value] : kStartSettings) {
        if (setenv(name, value, 0) != 0) return;
    }
    start.Repeat();
}

/// Whether the request has used up what a run may wait for its logs.
bool HasLogHung() {
    return LogWaitLeft(std::chrono::microseconds(1)).count() == 0;
}

/// A copy of the path: the title of the process is written over the arguments.
Service ServiceNamed(std::string programPath) {
    return {.serve =
                [programPath = std::move(programPath)] {
                    ServeRequest(programPath.c_str());
                    return !HasLogHung();
                },
            .forget = ResetRun};
}

void Serve(const Options& options, ListeningSocket& socket, ProgramStart& start,
           const std::string& programPath) {
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake < 0) throw std::runtime_error("no eventfd: " + GetSystemErrorText());
    Scoreboard board(options.supervisor.workers);
    Supervisor(options.supervisor, socket, board, wake, start, [&](std::size_t place) {
        Worker(socket.Descriptor(), wake, board, place, options.worker, ServiceNamed(programPath)).Run();
    }).Run();
    close(wake);
}

int Main(CLI::App& app, int argc, char** argv) {
    const std::string programPath = argv[0];
    Options options;
    Declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        throw;
    }
    Complete(options);
    ProgramStart start(argv);
    if (!options.checkOnly) {
        HoldSignals();
        StartWithSettings(start);
    }
    const std::string socketPath = std::filesystem::absolute(options.socket).string();
    EnterSite(options.site);
    if (options.checkOnly) {
        CheckSite();
        return 0;
    }
    DetachStandardStreams();
    ListeningSocket socket(socketPath);
    PrepareTransfers();
    PrepareRuns();
    Serve(options, socket, start, programPath);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app{"Serves SOAP requests that a web server passes on by SCGI, without a start for each.",
                     kServiceName};
        return Main(app, argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", kServiceName, error.what());
        return kWrongUsage;
    }
}
