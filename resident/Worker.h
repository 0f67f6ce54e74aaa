#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

#include "resident/RequestEnvironment.h"
#include "resident/Scoreboard.h"

namespace quorbel {

/// What a worker calls for each request.
struct Service {
    /// Serves the request that standard input and the environment hold; false when what is left may harm the next
    /// one. So does whatever it throws.
    std::function<bool()> serve;
    /// Lets go of all that the request left, behind the end of its connection.
    std::function<void()> forget;
};

struct WorkerSettings {
    int requests = 500;  ///< served before the worker ends
    std::chrono::milliseconds headerTimeout{10000};
    std::chrono::milliseconds pause{60000};  ///< the longest in which a peer neither sends nor takes anything
    std::size_t spare = 8;                   ///< the parent is woken while fewer workers are idle
};

/// Serves request after request in a process of its own, one at a time.
///
/// Takes connections from a listening socket that does not block and that all workers share. Ends after its number of
/// requests, when SIGTERM comes or its parent dies, and after a request that may have left something behind.
class Worker {
public:
    /// `wake` is an eventfd that the parent waits for. The board's place is this worker's own.
    Worker(int listener, int wake, Scoreboard& board, std::size_t place, const WorkerSettings& settings,
           Service service);
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// To be called once, in the worker's process, for which it sets signals, streams and memory up.
    void Run();

private:
    int NextConnection();
    int Accept();
    void AwaitConnection();
    bool Serve(int connection);
    bool CallService();
    void NoteRequest(const ScgiHeader& header);
    void WakeParentWhenFewIdle() const;

    const int listener_;
    const int wake_;
    Scoreboard& board_;
    const std::size_t place_;
    const WorkerSettings settings_;
    const Service service_;
    RequestEnvironment environment_;
    int events_ = -1;
    int signals_ = -1;
    bool asked_ = false;     ///< to end
    bool tookLast_ = false;  ///< one more connection since then
};

}  // namespace quorbel
