// Many processes share one log while it is archived, set up for the first time, killed, run out of room and carried
// over forks. Every entry that was acknowledged must stand exactly once in the log, whole and on a line or row of its
// own. An entry that was not acknowledged may be there or not.
//
// Usage: log_stress [ENTRIES [FORM]]. Each form goes on until so many entries were acknowledged, but for those lost to kills.
// Prints one line for each and exits with 1 when an entry was lost, torn, glued or doubled. The full disk is a small
// file system that grows whenever it has been full for a while: it needs a user who may mount one.

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "syslib/CVsysEventLogInterface.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

constexpr int kProcesses = 32;
constexpr int kStarts = 8;  // programs that one process is in turn
constexpr int kMostTries = 9'000'000;

struct Form {
    const char* name;
    const char* writer;
    bool kills;
    bool forks;
    bool fullDisk;
};

constexpr Form kForms[] = {
    {"file", "file", false, false, false},
    {"file, SIGKILL", "file", true, false, false},
    {"file, over fork", "file", false, true, false},
    {"file, full disk", "file", false, false, true},
    {"sqlite", "sqlite", false, false, false},
    {"sqlite, SIGKILL", "sqlite", true, false, false},
    {"sqlite, over fork", "sqlite", false, true, false},
    {"sqlite, full disk", "sqlite", false, false, true},
};

/// "00017 0000423 xxx...x 423.": 20 to 2,000 bytes, of which every one is known.
std::string EntryText(int process, int number) {
    char head[32];
    std::snprintf(head, sizeof head, "%05d %07d ", process, number);
    const std::size_t length = 20 + static_cast<unsigned>(process * 7919 + number * 104729) % 1981;
    std::string text = head;
    const std::string tail = ".";
    text.append(length - text.size() - tail.size(), static_cast<char>('a' + number % 26));
    return text + tail;
}

using Counter = std::atomic<long>;

/// One that every process of a form counts in.
Counter& NewSharedCounter() {
    void* const page =
        mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) std::abort();
    return *new (page) Counter(0);
}

/// One process: starts the log again and again and notes beside it what was acknowledged, one write for each.
class Process {
public:
    Process(const std::string& site, const std::string& notes, const Form& form, int number, int entries,
            Counter& refused)
        : site_(site), notes_(notes), form_(form), number_(number), entries_(entries), refused_(refused) {}

    void Run() {
        std::unique_ptr<CVsysEventLogInterface> log;
        for (int entry = 0; acknowledged_ < entries_ && entry < kMostTries; ++entry) {
            if (entry % std::max(entries_ / kStarts, 1) == 0) {
                if (log && form_.forks) ForkAndLog(*log, entry);
                log.reset();
                log = CVsysEventLogInterface::Create("Stress", LogThreading::Single, site_);
            }
            if (log) WriteOne(*log, number_, entry);
        }
    }

private:
    void ForkAndLog(CVsysEventLogInterface& log, int entry) {
        const pid_t child = fork();
        const int self = child == 0 ? number_ + kProcesses : number_;
        for (int i = 0; i < 10; ++i) WriteOne(log, self, kMostTries + entry + i);
        if (child == 0) _exit(0);
        waitpid(child, nullptr, 0);
    }

    void WriteOne(CVsysEventLogInterface& log, int process, int entry) {
        if (log.Info(nullptr, "%s", EntryText(process, entry).c_str()) != 1) {
            ++refused_;
            return;
        }
        ++acknowledged_;
        char note[32];
        const int length = std::snprintf(note, sizeof note, "%05d %07d\n", process, entry);
        const int file = open(notes_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (write(file, note, static_cast<std::size_t>(length)) != length) std::abort();
        close(file);
    }

    const std::string site_;
    const std::string notes_;
    const Form& form_;
    const int number_;
    const int entries_;
    Counter& refused_;
    int acknowledged_ = 0;
};

/// Kills one process after another, two hundred in all; each is followed by one with a number of its own.
void RunAll(const Form& form, const std::function<void(int process)>& run) {
    std::map<pid_t, int> running;
    const auto start = [&](int process) {
        const pid_t child = fork();
        if (child == 0) {
            run(process);
            _exit(0);
        }
        running[child] = process;
    };
    int started = 0;
    while (started < kProcesses) start(started++);
    std::minstd_rand random(std::random_device{}());
    for (int kills = 0; form.kills && kills < 200; ++kills) {
        usleep(random() % 40'000);
        const auto victim = std::next(running.begin(), static_cast<long>(random() % running.size()));
        kill(victim->first, SIGKILL);
        waitpid(victim->first, nullptr, 0);
        running.erase(victim);
        start(started++);
    }
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

std::multiset<std::string> EntriesOfFiles(const std::string& logs, long& strange) {
    std::multiset<std::string> found;
    for (const auto& file : fs::directory_iterator(logs)) {
        if (!file.path().filename().string().starts_with("l.txt") || file.path().extension() == ".lock")
            continue;
        std::ifstream text(file.path());
        for (std::string line; std::getline(text, line);) {
            if (line.find(" Archiving ") != line.npos) continue;
            const auto at = line.find("] ");
            if (at == line.npos) {
                ++strange;
            } else {
                found.insert(line.substr(at + 2));
            }
        }
    }
    return found;
}

std::multiset<std::string> EntriesOfDatabase(const std::string& path) {
    CVSQLite3Database database(path);
    CVSQLite3ResultSet rows;
    database.ExecuteSelectQuery("SELECT message FROM log_stress;", rows);
    std::multiset<std::string> found;
    for (int row = 0; row < rows.GetRowCount(); ++row) found.insert(rows.GetCell(row, 0));
    return found;
}

struct Verdict {
    long acknowledged = 0;
    long refused = 0;
    long lost = 0;
    long doubled = 0;
    long torn = 0;  // or glued

    bool IsClean() const { return acknowledged > 0 && lost + doubled + torn == 0; }
};

/// Half an entry at the end of a killed program stands on a line of its own and was never acknowledged.
Verdict Compare(const std::string& notes, const std::multiset<std::string>& found, long strange, bool kills) {
    Verdict verdict;
    std::set<std::string> acknowledged;
    std::ifstream file(notes);
    for (std::string line; std::getline(file, line);) {
        acknowledged.insert(EntryText(std::atoi(line.c_str()), std::atoi(line.c_str() + 6)));
    }
    verdict.acknowledged = static_cast<long>(acknowledged.size());
    for (const auto& entry : acknowledged) {
        const auto times = found.count(entry);
        verdict.lost += times == 0;
        verdict.doubled += times > 1;
    }
    for (const auto& entry : found) {
        const int process = std::atoi(entry.c_str());
        const int number = entry.size() > 6 ? std::atoi(entry.c_str() + 6) : 0;
        const std::string whole = EntryText(process, number);
        if (entry == whole) continue;
        const bool beginningOfAKilledOne = kills && whole.starts_with(entry) && !acknowledged.contains(whole);
        verdict.torn += !beginningOfAKilledOne;
    }
    if (!kills) verdict.torn += strange;
    return verdict;
}

/// A file system that is full again and again: it gets another megabyte a tenth of a second later.
class FullDisk {
public:
    explicit FullDisk(const std::string& directory) : directory_(directory) {
        mounted_ = mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=1m") == 0;
        if (mounted_) growing_ = std::jthread([this](const std::stop_token& stop) { Grow(stop); });
    }
    ~FullDisk() {
        growing_ = {};
        if (mounted_) umount2(directory_.c_str(), MNT_DETACH);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    bool IsMounted() const { return mounted_; }

private:
    void Grow(const std::stop_token& stop) {
        constexpr fsblkcnt_t kHardlyAny = 16;
        for (int megabytes = 1; !stop.stop_requested(); usleep(100'000)) {
            struct statvfs status;
            if (statvfs(directory_.c_str(), &status) != 0 || status.f_bavail > kHardlyAny) continue;
            const std::string size = "size=" + std::to_string(++megabytes) + "m";
            mount(nullptr, directory_.c_str(), nullptr, MS_REMOUNT, size.c_str());
        }
    }

    const std::string directory_;
    bool mounted_ = false;
    std::jthread growing_;
};

Verdict RunForm(const Form& form, const std::string& directory, int entries) {
    const std::string site = directory + "/config";
    const std::string logs = directory + "/logs";
    const std::string notes = directory + "/notes";
    fs::create_directories(site);
    fs::create_directories(logs);
    std::unique_ptr<FullDisk> disk;
    if (form.fullDisk) disk = std::make_unique<FullDisk>(logs);
    if (disk && !disk->IsMounted()) return {};
    Counter& refused = NewSharedCounter();
    // The section comes by the first start; what holds for all modules is there.
    std::ofstream(site + "/cvlogs.ini")
        << "[main]\nnumFiles=" << 100000
        << "\nbytesPerFiles=100000\nautoAppend=1\n[Stress]\nwriter=" << form.writer << "\nfilePath=" << logs
        << "/l.txt\ndbfilename=" << logs << "/l.sdb\n";
    RunAll(form,
           [&](int process) { Process(site, notes, form, process, entries / kProcesses, refused).Run(); });
    long strange = 0;
    const bool isFile = std::string(form.writer) == "file";
    const auto found = isFile ? EntriesOfFiles(logs, strange) : EntriesOfDatabase(logs + "/l.sdb");
    Verdict verdict = Compare(notes, found, strange, form.kills);
    verdict.refused = refused;
    return verdict;
}

/// Modules that start for the first time together; each section must be there afterwards.
bool FirstStartsLoseNothing(const std::string& directory) {
    for (int round = 0; round < 50; ++round) {
        const std::string site = directory + "/first" + std::to_string(round);
        fs::create_directories(site + "/logs");
        RunAll(kForms[0], [&](int process) {
            CVsysEventLogInterface::Create("M" + std::to_string(process), LogThreading::Single, site);
        });
        std::ifstream file(site + "/cvlogs.ini");
        const std::string text(std::istreambuf_iterator<char>(file), {});
        for (int process = 0; process < kProcesses; ++process) {
            if (text.find("\n[M" + std::to_string(process) + "]\n") == text.npos) return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    const int entries = argc > 1 ? std::atoi(argv[1]) : 100'000;
    std::string directory = (fs::temp_directory_path() / "quorbel-log-stress-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) return 1;
    bool clean = true;
    std::printf("%-22s %12s %8s %6s %8s %14s %8s\n", "form", "acknowledged", "refused", "lost", "doubled",
                "torn or glued", "seconds");
    for (const Form& form : kForms) {
        if (argc > 2 && std::string_view(argv[2]) != form.name) continue;
        const auto begin = std::chrono::steady_clock::now();
        const std::string own = directory + "/" + std::to_string(&form - kForms);
        const Verdict verdict = RunForm(form, own, entries);
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - begin;
        std::printf("%-22s %12ld %8ld %6ld %8ld %14ld %8.1f\n", form.name, verdict.acknowledged,
                    verdict.refused, verdict.lost, verdict.doubled, verdict.torn, spent.count());
        std::fflush(stdout);
        clean = clean && verdict.IsClean();
        fs::remove_all(own);
    }
    const bool kept = FirstStartsLoseNothing(directory);
    std::printf("50 first starts of 32 modules at once: %s\n",
                kept ? "every section is there" : "SECTIONS LOST");
    fs::remove_all(directory);
    return clean && kept ? 0 : 1;
}
