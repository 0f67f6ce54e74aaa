#include "soap/ParserMemory.h"

#include <malloc.h>

#include <cstdlib>

namespace quorbel {

namespace {

thread_local std::size_t left = 0;

/// What an allocation really takes, its header included.
std::size_t CostOf(void* memory) {
    return memory == nullptr ? 0 : malloc_usable_size(memory) + sizeof(std::size_t);
}

void Charge(void* memory) {
    const std::size_t cost = CostOf(memory);
    left -= cost < left ? cost : left;
}

}  // namespace

void LimitParserMemory(std::size_t bytes) {
    left = bytes;
}

void* TakeParserMemory(std::size_t size) noexcept {
    if (size > left) return nullptr;
    void* memory = std::malloc(size);
    Charge(memory);
    return memory;
}

void* ResizeParserMemory(void* memory, std::size_t size) noexcept {
    const std::size_t before = CostOf(memory);
    if (size > left + before) return nullptr;
    void* resized = std::realloc(memory, size);
    if (resized == nullptr) return nullptr;
    left += before;
    Charge(resized);
    return resized;
}

void FreeParserMemory(void* memory) noexcept {
    left += CostOf(memory);
    std::free(memory);
}

}  // namespace quorbel
