#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "resident/ListeningSocket.h"
#include "resident/ProgramStart.h"
#include "resident/Scoreboard.h"

namespace quorbel {

struct SupervisorSettings {
    std::size_t workers = 128;           ///< at most, also the size of the scoreboard
    std::size_t spare = 8;               ///< idle ones to keep ready
    std::chrono::seconds patience{660};  ///< for requests that run when it is told to stop
};

/// Lets the signals of a Supervisor wait until there is one. A reload that comes during the start would end the program.
void HoldSignals();

/// The parent of the workers. It touches no request: it keeps enough idle workers ready, replaces those that end,
/// tells the system log of those that crash, and passes signals on.
///
/// SIGTERM and SIGINT stop it once all running requests have ended; SIGHUP replaces every worker after its request, and
/// where the socket was handed over the program, too, by what its file holds now; SIGUSR1 writes one line of counts. One
/// object for a process, which must have a single thread and no children but those of the program before.
class Supervisor {
public:
    /// Runs in each new process, as the worker of that place; the process ends behind it.
    using Work = std::function<void(std::size_t place)>;

    /// `wake` is an eventfd that workers write to when few of them are idle.
    Supervisor(const SupervisorSettings& settings, ListeningSocket& socket, Scoreboard& board, int wake,
               ProgramStart& start, Work work);
    ~Supervisor();

    Supervisor(const Supervisor&) = delete;
    Supervisor& operator=(const Supervisor&) = delete;

    /// Until it is told to stop and all workers are gone.
    void Run();

private:
    using Clock = std::chrono::steady_clock;
    struct Child {
        pid_t pid = 0;  ///< 0 for a place that is free
        bool asked = false;
    };

    void TakeSignals();
    void OnSignal(int signal);
    void StartMissing();
    bool Start(std::size_t place);
    [[noreturn]] void BecomeWorker(std::size_t place, pid_t parent) noexcept;
    void RetireSurplus();
    void Reap();
    void ReportEnd(std::size_t place, int status);
    void Renew();
    void AskAll();
    void Ask(std::size_t place);
    void Stop();
    void KillWhenOverdue();
    std::size_t Alive() const;
    std::size_t Available() const;
    int Timeout() const;
    void TellCounts() const;

    const SupervisorSettings settings_;
    ListeningSocket& socket_;
    Scoreboard& board_;
    const int wake_;
    ProgramStart& start_;
    const Work work_;
    const int signals_;
    std::vector<Child> children_;                            ///< by place
    Clock::time_point notBefore_{};                          ///< the next start
    Clock::time_point deadline_ = Clock::time_point::max();  ///< of a stop
    bool stopping_ = false;
    std::uint64_t crashes_ = 0;
};

}  // namespace quorbel
