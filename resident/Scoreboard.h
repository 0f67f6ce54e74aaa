#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorbel {

enum class WorkerState : std::uint8_t { Free, Starting, Idle, Serving };

/// What the parent may tell about a request when its worker dies: nothing of its body.
struct RequestNote {
    std::uint64_t number = 0;  ///< counts the requests of all workers, from 1
    std::int64_t started = 0;  ///< seconds since 1970
    char method[16] = {};
    char peer[48] = {};
    char id[64] = {};
};

/// Shared memory in which each worker says what it does, for the parent and the other workers. Survives any death of a
/// worker: nothing in it is locked.
///
/// Made by the parent before the first fork. A worker writes its own place only; its note is read by the parent only
/// once the worker is gone.
class Scoreboard {
public:
    /// `workers` places. Throws CVException when there is no memory.
    explicit Scoreboard(std::size_t workers);
    ~Scoreboard();

    Scoreboard(const Scoreboard&) = delete;
    Scoreboard& operator=(const Scoreboard&) = delete;

    std::size_t Size() const { return size_; }
    WorkerState State(std::size_t place) const;
    void SetState(std::size_t place, WorkerState state);
    std::size_t Count(WorkerState state) const;

    RequestNote& Note(std::size_t place);
    std::uint64_t NextNumber();
    /// How many requests were begun so far.
    std::uint64_t Begun() const;

    /// Set: workers that are asked to end serve what is still in the queue first.
    void SetDraining();
    bool IsDraining() const;

private:
    struct Shared;

    std::size_t size_;
    std::size_t bytes_;
    Shared* shared_;
};

}  // namespace quorbel
