// The resident program: serves the requests that a web server passes on by SCGI, each in the same way as the CGI
// program.

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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
#include "tools/operator/CommandLine.h"

using namespace quorbel;
using namespace std::chrono_literals;

namespace {

constexpr int kWrongUsage = 2;
constexpr std::int64_t kMostWorkers = 4096;
constexpr std::int64_t kUsualSpare = 8;

struct Options {
    std::string site;
    std::string socket = "/run/quorbel/soapd.sock";
    std::int64_t workers = 128;
    std::int64_t spare = 0;  ///< not given: eight, or fewer workers
    std::int64_t requestsPerWorker = 500;
    std::chrono::milliseconds headerTimeout = 10s;
    std::chrono::milliseconds bodyTimeout = 60s;
    bool checkOnly = false;
};

/// With the value that holds when the option is not given.
std::string Help(const char* help, std::int64_t standard) {
    return std::string(help) + "; default: " + std::to_string(standard);
}

std::string Help(const char* help, std::chrono::milliseconds standard) {
    return Help(help, std::chrono::floor<std::chrono::seconds>(standard).count());
}

CommandLine CommandLineOf(Options& options) {
    return {
        .name = kServiceName,
        .help = "Serves SOAP requests that a web server passes on by SCGI, without a start for each.",
        .options =
            {
                Required({"--site", "DIR", "The site's directory", &options.site}),
                {"--socket", "PATH",
                 "Unix socket to make, unless one is handed over (LISTEN_FDS); default: " + options.socket,
                 &options.socket},
                {"--workers", "N", Help("Workers at most, 1 to 4096", options.workers),
                 NumberTarget{&options.workers, 1, kMostWorkers}},
                {"--spare", "N", Help("Idle workers to keep ready, at most as many", kUsualSpare),
                 NumberTarget{&options.spare, 1, kMostWorkers}},
                {"--requests-per-worker", "N",
                 Help("Requests before a worker is replaced, 1 to a billion", options.requestsPerWorker),
                 NumberTarget{&options.requestsPerWorker, 1, 1000000000}},
                {"--header-timeout", "SECONDS",
                 Help("For a request's header, 0.001 to 86400", options.headerTimeout),
                 SecondsTarget{&options.headerTimeout, 0.001, 86400}},
                {"--body-timeout", "SECONDS",
                 Help("Without a byte of a body or for an answer, 0.001 to 86400", options.bodyTimeout),
                 SecondsTarget{&options.bodyTimeout, 0.001, 86400}},
                {"--check", "", "Look at options and site, then exit", &options.checkOnly},
            },
        .commands = {},
        .run = {},
    };
}

void Complete(Options& options) {
    if (options.spare == 0) options.spare = std::min(kUsualSpare, options.workers);
    if (options.spare > options.workers) throw UsageError("--spare is more than --workers");
}

SupervisorSettings SettingsOfSupervisor(const Options& options) {
    return {.workers = static_cast<std::size_t>(options.workers),
            .spare = static_cast<std::size_t>(options.spare)};
}

WorkerSettings SettingsOfWorker(const Options& options) {
    return {.requests = static_cast<int>(options.requestsPerWorker),
            .headerTimeout = options.headerTimeout,
            .pause = options.bodyTimeout,
            .spare = static_cast<std::size_t>(options.spare)};
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
    const SupervisorSettings settings = SettingsOfSupervisor(options);
    Scoreboard board(settings.workers);
    Supervisor(settings, socket, board, wake, start, [&](std::size_t place) {
        Worker(socket.Descriptor(), wake, board, place, SettingsOfWorker(options), ServiceNamed(programPath))
            .Run();
    }).Run();
    close(wake);
}

void Run(const Options& options, char** argv) {
    const std::string programPath = argv[0];
    ProgramStart start(argv);
    HoldSignals();
    StartWithSettings(start);
    const std::string socketPath = std::filesystem::absolute(options.socket).string();
    EnterSite(options.site);
    DetachStandardStreams();
    ListeningSocket socket(socketPath);
    PrepareTransfers();
    PrepareRuns();
    Serve(options, socket, start, programPath);
}

void Check(const Options& options) {
    EnterSite(options.site);
    CheckSite();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options;
        if (!ReadOptions(CommandLineOf(options), argc, argv)) return 0;
        Complete(options);
        if (options.checkOnly) {
            Check(options);
        } else {
            Run(options, argv);
        }
        return 0;
    } catch (...) {
        std::fprintf(stderr, "%s: %s\n", kServiceName, ReasonOfFailure().c_str());
        return kWrongUsage;
    }
}
