// Hundreds of short programs share one log that is archived every few entries; some are killed. Every entry
// of every program that ended normally must stand exactly once in the log or an archive, and no line may be
// torn. Usage: log_stress [programs [at once]]. Exit status 1 when a line was lost, torn or doubled.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "syslib/CVsysEventLogInterface.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

constexpr int kEntries = 20;

std::string Entry(int program, int number) {
    return "program " + std::to_string(program) + " entry " + std::to_string(number) + " end";
}

int RunProgram(const std::string& directory, int program) {
    const auto log = CVsysEventLogInterface::Create("SOAP", LogThreading::Single, directory);
    if (!log || !log->IsReady()) return 1;
    for (int number = 0; number < kEntries; ++number) {
        if (log->Info(nullptr, "%s", Entry(program, number).c_str()) != 1) return 1;
    }
    return 0;
}

struct Programs {
    std::map<pid_t, int> running;
    std::set<int> ended;
    int killed = 0;
    int refused = 0;

    void WaitForOne() {
        int status = 0;
        const pid_t pid = wait(&status);
        if (WIFSIGNALED(status)) ++killed;
        if (WIFEXITED(status) && WEXITSTATUS(status) != 0) ++refused;
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0) ended.insert(running[pid]);
        running.erase(pid);
    }
};

Programs RunAll(const std::string& directory, int count, std::size_t atOnce) {
    Programs programs;
    std::minstd_rand random(std::random_device{}());
    for (int program = 0; program < count; ++program) {
        const pid_t pid = fork();
        if (pid == 0) _exit(RunProgram(directory, program));
        programs.running[pid] = program;
        if (random() % 16 == 0) {
            usleep(random() % 3000);
            kill(std::next(programs.running.begin(), random() % programs.running.size())->first, SIGKILL);
        }
        while (programs.running.size() >= atOnce) programs.WaitForOne();
    }
    while (!programs.running.empty()) programs.WaitForOne();
    return programs;
}

std::map<std::string, int> LinesIn(const std::string& directory) {
    std::map<std::string, int> lines;
    for (const auto& file : fs::directory_iterator(directory)) {
        const std::string name = file.path().filename();
        if (!name.starts_with("soap_log.txt") || name.ends_with(".lock")) continue;
        std::ifstream text(file.path());
        for (std::string line; std::getline(text, line);) {
            if (line.find(" Archiving ") == std::string::npos) ++lines[line.substr(line.find("] ") + 2)];
        }
    }
    return lines;
}

int CountFaults(std::map<std::string, int> lines, const std::set<int>& ended, int count) {
    int faults = 0;
    for (int program = 0; program < count; ++program) {
        for (int number = 0; number < kEntries; ++number) {
            const auto found = lines.extract(Entry(program, number));
            const int times = found.empty() ? 0 : found.mapped();
            if (times > 1 || (times == 0 && ended.contains(program))) ++faults;
        }
    }
    return faults + static_cast<int>(lines.size());  // what is left is no entry of anybody's
}

}  // namespace

int main(int argc, char* argv[]) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 2000;
    const int atOnce = argc > 2 ? std::atoi(argv[2]) : 32;
    std::string directory = (fs::temp_directory_path() / "quorbel-log-stress-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) return 1;
    std::ofstream(directory + "/cvlogs.ini")
        << "[SOAP]\nfilePath=" << directory
        << "/soap_log.txt\nbytesPerFiles=4000\nnumFiles=100000\nautoAppend=1\n";

    const Programs programs = RunAll(directory, count, static_cast<std::size_t>(std::max(atOnce, 1)));
    const int faults = CountFaults(LinesIn(directory), programs.ended, count) + programs.refused;
    std::printf("%d programs, %d killed, %d refused, %d lines lost, torn or doubled\n", count,
                programs.killed, programs.refused, faults - programs.refused);
    fs::remove_all(directory);
    return faults == 0 ? 0 : 1;
}
