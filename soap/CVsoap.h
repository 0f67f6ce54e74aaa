#pragma once

#include <cstdlib>
#include <memory>

class CVLogInterface;

namespace quorbel {

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
/// A zero-terminated text on the heap.
using HeapText = std::unique_ptr<char, FreeText>;

/// Reads the request body from standard input: exactly the number of bytes that CONTENT_LENGTH announces, as
/// they arrive, followed by a zero byte. Null when no complete body can be had: no CONTENT_LENGTH, a value
/// below 1, too few bytes, or no memory. Every step goes to `log` at level TRACE.
HeapText ReadRequestBody(CVLogInterface& log);

/// Reads the announced body and drops it, before an answer that does not need it: a web server that
/// feeds the program through a socket loses the answer of one that ends with input left over.
void DropRequestBody();

}  // namespace quorbel
