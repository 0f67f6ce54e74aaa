#include "soap/CVsoapParser.h"

#include <expat.h>
#include <malloc.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "soap/CVsoap.h"
#include "soap/FieldCapture.h"
#include "soap/Methods.h"
#include "syslib/CVLogInterface.h"
#include "util/BoundedText.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

// Memory for the XML parser, up to a limit: it keeps something for every open element and for every name that it
// has seen, so a small document can make it ask for a multiple of its own size. What is freed may be taken again.

/// What the parser may still take.
thread_local std::size_t left = 0;

/// What an allocation really takes, its header included.
std::size_t CostOf(void* memory) {
    return memory == nullptr ? 0 : malloc_usable_size(memory) + sizeof(std::size_t);
}

void Charge(void* memory) {
    const std::size_t cost = CostOf(memory);
    left -= cost < left ? cost : left;
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

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<XML_ParserStruct, FreeParser>;

/// The parser's memory: so much for any document, and so many times the body.
constexpr std::size_t kMemoryForAny = 4 << 20;
constexpr std::size_t kMemoryForByte = 2;

/// The state of one parse: outside or inside a method element, and the fields being captured.
class EnvelopeState {
public:
    EnvelopeState(XML_Parser parser, RequestRecord& record)
        : parser_(parser), record_(record), capture_(record) {}

    void Start(std::string_view name, const XML_Char** attributes);
    void Data(std::string_view text);
    void End(std::string_view name);
    /// Ends a method that the document left open.
    void Finish();

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
    bool insideMethod_ = false;
    bool envelopeEnded_ = false;
    bool failed_ = false;
};

/// Kept for compatibility: the last attribute's name decides alone, whatever its value.
Nil NilIn(const XML_Char** attributes) {
    Nil nil = Nil::No;
    for (; attributes[0] != nullptr && attributes[1] != nullptr; attributes += 2) {
        if (EndsWithNoCase(attributes[0], "nil")) {
            nil = Nil::Always;
        } else if (nil == Nil::Always) {
            nil = Nil::WithoutText;
        }
    }
    return nil;
}

void EnvelopeState::Start(std::string_view name, const XML_Char** attributes) {
    const TagName element(name);
    if (!insideMethod_) {
        const Method* method = MethodOpenedBy(element);
        if (method == nullptr) return;
        Open(*method);
    }
    capture_.Start(element, NilIn(attributes));
}

void EnvelopeState::Open(const Method& method) {
    insideMethod_ = true;
    capture_.Open(method);
    currentMethodCode = method.code;
    CopyText(g_szCommand, method.name);
    record_.Set(Slot::CommandWord, method.commandWord);
}

void EnvelopeState::Data(std::string_view text) {
    if (insideMethod_) capture_.Data(text);
}

void EnvelopeState::End(std::string_view name) {
    if (EndsWithNoCase(name, "Envelope")) {
        envelopeEnded_ = true;
        return;
    }
    if (!insideMethod_) return;
    const TagName element(name);
    if (const Method* method = MethodClosedBy(element); method != nullptr) {
        Close(*method);
    } else {
        capture_.End(element);
    }
}

/// The name that matched decides what is recorded, not the method that was opened: any element inside whose
/// name ends with a method's name closes the method early.
void EnvelopeState::Close(const Method& method) {
    Finish();
    if (method.endRecords == EndRecords::MemberKind) {
        record_.Set(Slot::MemberKind, method.endWord);
    } else if (method.endRecords == EndRecords::MessagingAction) {
        record_.Set(Slot::MessagingAction, method.endWord);
    }
}

void EnvelopeState::Finish() {
    if (insideMethod_) capture_.Close();
    insideMethod_ = false;
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

/// A SOAP message must not contain a document type declaration.
void XMLCALL HandleDoctype(void* userData, const XML_Char*, const XML_Char*, const XML_Char*, int) noexcept {
    XML_StopParser(StateOf(userData).parser(), XML_FALSE);
}

ParserHandle MakeParser(std::size_t length) {
    static constexpr XML_Memory_Handling_Suite kMemory = {TakeParserMemory, ResizeParserMemory,
                                                          FreeParserMemory};
    left = kMemoryForAny + kMemoryForByte * length;
    return ParserHandle(XML_ParserCreate_MM(nullptr, &kMemory, nullptr));
}

int ReportParseError(CVLogInterface& log, int code, unsigned long line) {
    log.Error("Parse error", "[%d] %s at line %d\n", code, XML_ErrorString(static_cast<XML_Error>(code)),
              static_cast<int>(line));
    return 0;
}

}  // namespace

int ParseEnvelope(const char* body, RequestRecord& record, CVLogInterface& log) {
    const std::size_t length = std::strlen(body);
    const ParserHandle parser = MakeParser(length);
    if (!parser || length > INT_MAX) return ReportParseError(log, XML_ERROR_NO_MEMORY, 0);

    EnvelopeState state(parser.get(), record);
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(parser.get(), HandleStart, HandleEnd);
    XML_SetCharacterDataHandler(parser.get(), HandleData);
    XML_SetStartDoctypeDeclHandler(parser.get(), HandleDoctype);
    // Kept for compatibility: never told that the input is complete, so an unclosed envelope is served.
    const XML_Status status = XML_Parse(parser.get(), body, static_cast<int>(length), XML_FALSE);
    if (status != XML_STATUS_OK) {
        return ReportParseError(log, XML_GetErrorCode(parser.get()), XML_GetCurrentLineNumber(parser.get()));
    }
    state.Guarded([&] { state.Finish(); });
    if (state.failed()) return ReportParseError(log, XML_ERROR_NO_MEMORY, 0);
    if (!state.envelopeEnded()) log.Warn("Parse OK", "But not parsed till end of mark!");
    return 1;
}

}  // namespace quorbel
