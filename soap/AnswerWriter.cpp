#include "soap/AnswerWriter.h"

#include <cstdio>

#include "soap/CVsoap.h"
#include "soap/Envelopes.h"

namespace quorbel {

namespace {

enum class Answer { None, Response, Fault };
Answer answer = Answer::None;

/// Output errors go unnoticed: there is no other way to the client. After one nothing is written: each further piece
/// could wait as long again for a client that takes nothing.
void Write(std::string_view piece) {
    if (std::ferror(stdout) == 0) std::fwrite(piece.data(), 1, piece.size(), stdout);
}

}  // namespace

void WriteHeader() {
    std::fputs("Content-type: text/xml\n\n", stdout);
}

void WriteResponse(std::string_view reply) {
    if (answer == Answer::Fault) return;
    answer = Answer::Response;
    MakeResponse(Write, g_szCommand, reply);
}

void WriteFault(std::string_view code, std::string_view text) {
    if (answer != Answer::None) return;
    answer = Answer::Fault;
    MakeFault(Write, code, text, m_szHostName);
}

void WriteFault(std::string_view text) {
    WriteFault("", text);
}

void BeginAnswer() {
    answer = Answer::None;
    std::clearerr(stdout);
}

}  // namespace quorbel
