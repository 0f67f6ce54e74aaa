// Feeds arbitrary replies to the writers of the answer. Each answer must be one XML document, and a text that XML can
// hold must come back unchanged; the XML parser says which those are.

#include <expat.h>

#include <memory>
#include <optional>

#include "fuzz/FuzzSupport.h"
#include "soap/Envelopes.h"
#include "util/FormatExpansion.h"

using namespace quorbel;

namespace {

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

/// The text of the elements whose name ends with `element`; nothing when the document is none.
class TextReader {
public:
    explicit TextReader(std::string element)
        : element_(std::move(element)), parser_(XML_ParserCreate(nullptr)) {
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), Start, End);
        XML_SetCharacterDataHandler(parser_.get(), Characters);
    }

    std::optional<std::string> Read(const std::string& document) {
        const int size = static_cast<int>(document.size());
        if (XML_Parse(parser_.get(), document.data(), size, XML_TRUE) != XML_STATUS_OK) return {};
        return text_;
    }

private:
    static TextReader& Self(void* user) { return *static_cast<TextReader*>(user); }
    static void Start(void* user, const char* name, const char**) {
        Self(user).isInside_ = std::string(name).ends_with(Self(user).element_);
    }
    static void End(void* user, const char*) { Self(user).isInside_ = false; }
    static void Characters(void* user, const char* text, int size) {
        if (Self(user).isInside_) Self(user).text_.append(text, static_cast<std::size_t>(size));
    }

    std::string element_;
    std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
    std::string text_;
    bool isInside_ = false;
};

/// What a parser makes of a text; nothing for one that no document can hold.
std::optional<std::string> AsXmlHasIt(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '<' || c == '>' || c == '&') {
            escaped += c == '<' ? "&lt;" : c == '>' ? "&gt;" : "&amp;";
        } else {
            escaped += c;
        }
    }
    return TextReader("a").Read("<?xml version='1.0' encoding='utf-8'?><a>" + escaped + "</a>");
}

std::string Response(const char* method, const std::string& reply) {
    std::string document;
    MakeResponse([&](std::string_view piece) { document += piece; }, method, reply);
    return document;
}

std::string Fault(const std::string& text) {
    std::string document;
    MakeFault([&](std::string_view piece) { document += piece; }, "2012", text, text);
    return document;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string reply = Text(data, size);
    const auto text = TextReader("AddGroupResult").Read(Response("AddGroup", reply + "\n"));
    Require(text.has_value());
    if (const auto unchanged = AsXmlHasIt(reply)) Require(*text == *unchanged);
    Require(TextReader("string").Read(Response("QueryGroup", reply)).has_value());
    const auto fault = TextReader("faultstring").Read(Fault(reply));
    Require(fault.has_value() && fault->starts_with("2012 "));
    const std::string expanded = ExpandWithoutArguments(reply, 2047);
    Require(expanded.size() <= 2047);
    Require(TextReader("faultstring").Read(Fault(expanded)).has_value());
    Require(EscapeXml(reply, WhiteSpace::AsEntities).find('\t') == std::string::npos);
    return 0;
}
