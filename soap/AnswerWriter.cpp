#include "soap/AnswerWriter.h"

#include <cstdio>
#include <string>

#include "soap/FaultEnvelope.h"
#include "soap/RequestGlobals.h"
#include "soap/ResponseEnvelope.h"
#include "soap/XmlEscape.h"

namespace quorbel {

namespace {

bool faultWritten = false;

/// Output errors have no one left to hear of them: the client is gone.
void Write(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void WriteFaultString(std::string_view faultString) {
    if (faultWritten) return;
    faultWritten = true;
    Write(FaultEnvelope(faultString, m_szHostName));
}

}  // namespace

void WriteHeader() {
    std::fputs("Content-type: text/xml\n\n", stdout);
}

void WriteResponse(std::string_view reply) {
    if (!faultWritten) Write(ResponseEnvelope(g_szCommand, reply));
}

void WriteFault(std::string_view code, std::string_view text) {
    WriteFaultString(std::string(code) + " " + EscapeXml(text));
}

void WriteFault(std::string_view text) {
    WriteFaultString(EscapeXml(text));
}

void BeginAnswer() {
    faultWritten = false;
}

}  // namespace quorbel
