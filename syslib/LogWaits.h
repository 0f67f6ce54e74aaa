#pragma once

#include <chrono>
#include <string>

namespace quorbel {

// How long a process waits for its logs while other programs hold them.
//
// Each wait has a limit of its own. A program that serves requests also limits all waits of one request: from
// BeginLogRun on, the waits of every log of the process come out of one minute, until the next BeginLogRun. A
// program that never calls it has no such limit.

constexpr std::chrono::seconds kLogWaitOfARun{60};

void BeginLogRun();

/// What is left of the run's time, at most `wanted`. Never below zero.
std::chrono::microseconds LogWaitLeft(std::chrono::microseconds wanted);

/// Takes a wait out of the run's time; the wait that uses it up is told to the system log, under `identity`.
void CountLogWait(std::chrono::microseconds waited, const std::string& identity);

/// Sleeps, and counts it.
void WaitForLog(std::chrono::microseconds wait, const std::string& identity);

/// The patience of one writer: about a minute, after a wait in vain about a second, until it succeeds again.
/// So a program that hangs with a log costs another one a minute, and not a minute for each entry.
class LogPatience {
public:
    std::chrono::milliseconds Next() const;
    void Succeeded() { waitedInVain_ = false; }
    void WaitedInVain() { waitedInVain_ = true; }

private:
    bool waitedInVain_ = false;
};

}  // namespace quorbel
