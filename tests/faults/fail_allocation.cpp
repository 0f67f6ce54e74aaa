// Loaded in front of a program: makes one of its allocations fail, or all from one on.
//
//   FAIL_AT     the number of the allocation that fails, counted from 1; without it none does
//   FAIL_ON     when set, all behind it fail, too
//   FAIL_COUNT  a file that takes the number of allocations when the program ends

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

// The C library's own, which need no look-up: that would allocate.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

std::atomic<long> allocations = 0;

bool Fails() {
    // The first allocations come before anything of this file could be made ready.
    static const char* const at = std::getenv("FAIL_AT");
    static const long first = at == nullptr ? 0 : std::atol(at);
    static const bool isForGood = std::getenv("FAIL_ON") != nullptr;
    const long number = ++allocations;
    const bool fails = first > 0 && (number == first || (isForGood && number > first));
    if (fails) errno = ENOMEM;
    return fails;
}

[[gnu::destructor]] void TellCount() {
    const char* path = std::getenv("FAIL_COUNT");
    if (path == nullptr) return;
    char text[32];
    const int size = std::snprintf(text, sizeof text, "%ld\n", allocations.load());
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (write(file, text, static_cast<std::size_t>(size)) != size) std::abort();
    close(file);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    return Fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    return Fails() ? nullptr : __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = Fails() ? nullptr : __libc_memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}
}
