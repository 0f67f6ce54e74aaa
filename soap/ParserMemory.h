#pragma once

#include <cstddef>

namespace quorbel {

// Memory for the XML parser, up to a limit: it keeps something for every open element and for every name that it
// has seen, so a small document can make it ask for a multiple of its own size. Each thread has its own limit.

/// What the parser may still take from now on.
void LimitParserMemory(std::size_t bytes);

// As malloc, realloc and free; null also beyond the limit. What is freed may be taken again.
void* TakeParserMemory(std::size_t size) noexcept;
void* ResizeParserMemory(void* memory, std::size_t size) noexcept;
void FreeParserMemory(void* memory) noexcept;

}  // namespace quorbel
