#include "soap/CVsoapParser.h"

// The library declares its limit on entities only to those who say that it was built with entities, as it
// was.
#define XML_DTD
#include <expat.h>

#include <climits>
#include <cstring>
#include <memory>

#include "soap/FieldCapture.h"
#include "soap/MethodTable.h"
#include "soap/RequestGlobals.h"
#include "syslib/CVLogInterface.h"
#include "util/BoundedText.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<XML_ParserStruct, FreeParser>;

// Clients of the service declare nothing. A document that does may cost the parser time for each attribute
// and each element, and memory for each entity: both are bounded.
constexpr int kMaxDeclaredAttributes = 64;
constexpr float kMaxAmplification = 5.0F;

/// The state of one parse: outside or inside a method element, and the fields being captured.
class EnvelopeState {
public:
    EnvelopeState(XML_Parser parser, RequestRecord& record)
        : parser_(parser), record_(record), capture_(record) {}

    void Start(std::string_view name, const XML_Char** attributes);
    void Data(std::string_view text);
    void End(std::string_view name);
    /// Counts a declared attribute; true when there are more than any client needs.
    bool DeclaresTooMuch() { return ++declaredAttributes_ > kMaxDeclaredAttributes; }

    XML_Parser parser() const { return parser_; }
    bool envelopeEnded() const { return envelopeEnded_; }
    bool failed() const { return failed_; }

    /// Runs a step of the parse; C code must not be unwound, so a step that throws marks the parse as failed.
    template <typename Step>
    void Guarded(Step step) noexcept {
        if (failed_) return;
        try {
            step();
        } catch (...) {
            failed_ = true;
        }
    }

private:
    void Open(const Method& method);
    void Close(const Method& method);

    XML_Parser parser_;
    RequestRecord& record_;
    FieldCapture capture_;
    FieldHandler handler_ = FieldHandler::Common;
    int declaredAttributes_ = 0;
    bool insideMethod_ = false;
    bool envelopeEnded_ = false;
    bool failed_ = false;
};

/// Only the last attribute decides, by its name alone; this is what clients' "nil" has always meant here.
bool IsNil(const XML_Char** attributes) {
    bool isNil = false;
    for (; attributes[0] != nullptr && attributes[1] != nullptr; attributes += 2) {
        isNil = EndsWithNoCase(attributes[0], "nil");
    }
    return isNil;
}

void EnvelopeState::Start(std::string_view name, const XML_Char** attributes) {
    if (!insideMethod_) {
        const Method* method = MethodOpenedBy(name);
        if (method == nullptr) return;
        Open(*method);
    }
    const bool isNil = IsNil(attributes);
    capture_.Start(FieldHandler::Common, name, isNil);
    capture_.Start(handler_, name, isNil);
}

void EnvelopeState::Open(const Method& method) {
    insideMethod_ = true;
    handler_ = method.handler;
    currentMethodCode = method.code;
    CopyText(g_szCommand, method.name);
    record_[Slot::CommandWord].emplace(method.commandWord);
}

void EnvelopeState::Data(std::string_view text) {
    if (!insideMethod_) return;
    capture_.Data(FieldHandler::Common, text);
    capture_.Data(handler_, text);
}

void EnvelopeState::End(std::string_view name) {
    if (EndsWithNoCase(name, "Envelope")) {
        envelopeEnded_ = true;
        return;
    }
    if (!insideMethod_) return;
    if (const Method* method = MethodClosedBy(name); method != nullptr) {
        Close(*method);
        return;
    }
    capture_.End(FieldHandler::Common, name);
    capture_.End(handler_, name);
}

/// The name that matched decides what is recorded, not the method that was opened: any element inside whose
/// name ends with a method's name closes the method early.
void EnvelopeState::Close(const Method& method) {
    insideMethod_ = false;
    if (method.endRecords == EndRecords::MemberKind) {
        record_[Slot::MemberKind].emplace(method.endWord);
    } else if (method.endRecords == EndRecords::MessagingAction) {
        record_[Slot::MessagingAction].emplace(method.endWord);
    }
}

EnvelopeState& StateOf(void* userData) {
    return *static_cast<EnvelopeState*>(userData);
}

void XMLCALL HandleStart(void* userData, const XML_Char* name, const XML_Char** attributes) noexcept {
    StateOf(userData).Guarded([&] { StateOf(userData).Start(name, attributes); });
}

void XMLCALL HandleEnd(void* userData, const XML_Char* name) noexcept {
    StateOf(userData).Guarded([&] { StateOf(userData).End(name); });
}

void XMLCALL HandleData(void* userData, const XML_Char* text, int length) noexcept {
    StateOf(userData).Guarded(
        [&] { StateOf(userData).Data(std::string_view(text, static_cast<std::size_t>(length))); });
}

void XMLCALL HandleDeclaration(void* userData, const XML_Char*, const XML_Char*, const XML_Char*,
                               const XML_Char*, int) noexcept {
    EnvelopeState& state = StateOf(userData);
    if (state.DeclaresTooMuch()) XML_StopParser(state.parser(), XML_FALSE);
}

void LimitDeclarations(XML_Parser parser) {
    XML_SetAttlistDeclHandler(parser, HandleDeclaration);
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, kMaxAmplification);
}

int ReportParseError(CVLogInterface& log, int code, unsigned long line) {
    log.Error("Parse error", "[%d] %s at line %d\n", code, XML_ErrorString(static_cast<XML_Error>(code)),
              static_cast<int>(line));
    return 0;
}

}  // namespace

int ParseEnvelope(const char* body, RequestRecord& record, CVLogInterface& log) {
    const ParserHandle parser(XML_ParserCreate(nullptr));
    const std::size_t length = std::strlen(body);
    if (!parser || length > INT_MAX) return ReportParseError(log, XML_ERROR_NO_MEMORY, 0);

    EnvelopeState state(parser.get(), record);
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(parser.get(), HandleStart, HandleEnd);
    XML_SetCharacterDataHandler(parser.get(), HandleData);
    LimitDeclarations(parser.get());
    // Never told that the input is complete: clients rely on an unclosed envelope still being served.
    const XML_Status status = XML_Parse(parser.get(), body, static_cast<int>(length), XML_FALSE);
    if (status != XML_STATUS_OK) {
        return ReportParseError(log, XML_GetErrorCode(parser.get()), XML_GetCurrentLineNumber(parser.get()));
    }
    if (state.failed()) return ReportParseError(log, XML_ERROR_NO_MEMORY, 0);
    if (!state.envelopeEnded()) log.Warn("Parse OK", "But not parsed till end of mark!");
    return 1;
}

}  // namespace quorbel
