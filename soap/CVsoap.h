#pragma once

#include <cstdlib>
#include <memory>

#include "soap/RequestRecord.h"

// What one run of the program shares across its layers. Each is written in one place; pure functions
// take what they need as arguments.

/// The current method's name as the method table spells it; empty while no method was recognised.
/// Written by the envelope parser; read by translation and the response writer.
extern char g_szCommand[256];

/// The current method's code, or kNoMethod for none. Written by the envelope parser.
extern int currentMethodCode;

/// This machine's name, for the fault actor. Written by the program entry.
extern char m_szHostName[256];

/// The full path of the program's log file, for whoever looks at a run from outside. Written by the program
/// entry.
extern char m_szPath[1024];

namespace quorbel {

/// What the program was started with: the directory of its logs and the server addresses of the request.
struct StartArguments {
    char logDirectory[256];
    SharedText url;  ///< null for none
    SharedText url2;
};

}  // namespace quorbel

/// The log directory is written by the program entry, the addresses by request translation.
extern quorbel::StartArguments gArguments;

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
