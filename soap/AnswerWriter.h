#pragma once

#include <string_view>

namespace quorbel {

// Writes the answer to standard output, which the web server relays to the client. Nothing else of the
// program may write there. A client never gets a second document behind a fault, nor a fault behind a response: such
// a call writes nothing.
//
// Nothing is flushed here: the end of an answer leaves with the end of the run, behind its entry in the delivery journal.
// A program that is killed in between answers nothing whole that the journal does not know.

/// The CGI header and the empty line behind it. From here on everything written is the HTTP body.
void WriteHeader();

/// The SOAP response of the current method (g_szCommand) with the server's reply.
void WriteResponse(std::string_view reply);

/// A SOAP fault whose text is `code`, a blank and `text`; the code is put in as it is, the text escaped.
void WriteFault(std::string_view code, std::string_view text);

/// A SOAP fault for a text that begins with its number.
void WriteFault(std::string_view text);

/// Begins the answer of a new run: what the run before wrote no longer counts.
void BeginAnswer();

}  // namespace quorbel
