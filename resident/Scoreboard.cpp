#include "resident/Scoreboard.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

#include "CVException.h"

namespace quorbel {

/// The places follow behind it: all states, so that counting them is one walk over a few bytes, then all notes.
struct Scoreboard::Shared {
    std::atomic<std::uint64_t> begun{0};
    std::atomic<bool> draining{false};
    std::atomic<WorkerState>* states = nullptr;
    RequestNote* notes = nullptr;

    static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
    static_assert(std::atomic<WorkerState>::is_always_lock_free);
};

namespace {

constexpr std::size_t kStatesAt = 64;

std::size_t NotesAt(std::size_t workers) {
    return (kStatesAt + workers + 63) / 64 * 64;
}

}  // namespace

Scoreboard::Scoreboard(std::size_t workers)
    : size_(workers), bytes_(NotesAt(workers) + workers * sizeof(RequestNote)) {
    static_assert(sizeof(Shared) <= kStatesAt);
    void* memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw CVException("Scoreboard", __LINE__, "no shared memory", GetSystemErrorText());
    }
    shared_ = new (memory) Shared;
    auto* bytes = static_cast<std::byte*>(memory);
    shared_->states = new (bytes + kStatesAt) std::atomic<WorkerState>[workers];
    shared_->notes = new (bytes + NotesAt(workers)) RequestNote[workers];
    std::for_each_n(shared_->states, workers, [](auto& state) { state = WorkerState::Free; });
}

Scoreboard::~Scoreboard() {
    munmap(shared_, bytes_);
}

WorkerState Scoreboard::State(std::size_t place) const {
    return shared_->states[place].load();
}

void Scoreboard::SetState(std::size_t place, WorkerState state) {
    shared_->states[place].store(state);
}

std::size_t Scoreboard::Count(WorkerState state) const {
    return static_cast<std::size_t>(
        std::count_if(shared_->states, shared_->states + size_,
                      [&](const auto& entry) { return entry.load(std::memory_order_relaxed) == state; }));
}

RequestNote& Scoreboard::Note(std::size_t place) {
    return shared_->notes[place];
}

std::uint64_t Scoreboard::NextNumber() {
    return ++shared_->begun;
}

std::uint64_t Scoreboard::Begun() const {
    return shared_->begun.load();
}

void Scoreboard::SetDraining() {
    shared_->draining = true;
}

bool Scoreboard::IsDraining() const {
    return shared_->draining.load();
}

}  // namespace quorbel
