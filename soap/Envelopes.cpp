#include "soap/Envelopes.h"

#include <utf8.h>

#include <array>

#include "util/BoundedText.h"

namespace quorbel {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// What stands in a document instead of the `length` bytes at some place of a valid text; 0 for nothing.
struct Substitute {
    std::string_view text = {};
    std::size_t length = 0;
};

/// A line feed and a tab alike: kept for compatibility.
Substitute WhiteSpaceEntity(std::string_view text) {
    if (text[0] != '\r') return {"&#xA;", 1};
    return text.substr(1, 1) == "\n" ? Substitute{"", 1} : Substitute{"&#xD;", 1};
}

/// U+FFFE and U+FFFF are the only characters beyond ASCII that valid UTF-8 may hold and XML may not.
bool IsForbidden(std::string_view text) {
    return text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
}

Substitute SubstituteAt(std::string_view text, WhiteSpace whiteSpace) {
    switch (const char c = text[0]; c) {
        case '<':
            return {"&lt;", 1};
        case '>':
            return {"&gt;", 1};
        case '&':
            return {"&amp;", 1};
        case '\'':
            return {"&apos;", 1};
        case '"':
            return {"&quot;", 1};
        case '\t':
        case '\n':
        case '\r':
            return whiteSpace == WhiteSpace::AsEntities ? WhiteSpaceEntity(text) : Substitute{};
        case '\xEF':
            return IsForbidden(text) ? Substitute{kReplacement, 3} : Substitute{};
        default:
            return static_cast<unsigned char>(c) < 0x20 ? Substitute{kReplacement, 1} : Substitute{};
    }
}

/// Collects small pieces before it hands them on; the last ones at Finish.
class Document {
public:
    explicit Document(const DocumentSink& sink) : sink_(sink) {}

    /// Markup, as it is.
    Document& Put(std::string_view piece) {
        if (piece.size() > room_.size() - used_) Finish();
        if (piece.size() > room_.size()) {
            sink_(piece);
        } else {
            used_ += piece.copy(room_.data() + used_, piece.size());
        }
        return *this;
    }

    /// Text from outside, escaped.
    Document& PutText(std::string_view text, WhiteSpace whiteSpace = WhiteSpace::AsItIs) {
        while (!text.empty()) {
            const auto valid =
                static_cast<std::size_t>(utf8::find_invalid(text.begin(), text.end()) - text.begin());
            PutValid(text.substr(0, valid), whiteSpace);
            if (valid == text.size()) break;
            Put(kReplacement);
            text.remove_prefix(valid + 1);
        }
        return *this;
    }

    void Finish() {
        if (used_ > 0) sink_({room_.data(), used_});
        used_ = 0;
    }

private:
    void PutValid(std::string_view text, WhiteSpace whiteSpace) {
        std::size_t from = 0;
        for (std::size_t at = 0; at < text.size();) {
            const Substitute substitute = SubstituteAt(text.substr(at), whiteSpace);
            if (substitute.length == 0) {
                ++at;
                continue;
            }
            Put(text.substr(from, at - from)).Put(substitute.text);
            at += substitute.length;
            from = at;
        }
        Put(text.substr(from));
    }

    const DocumentSink& sink_;
    std::size_t used_ = 0;
    std::array<char, 8192> room_;
};

/// A line of the reply without its end: the byte before the line feed goes, whatever it is (kept for compatibility).
/// When that was part of a longer character, the rest of it goes as well.
std::string_view WithoutLineEnd(std::string_view line) {
    if (line.empty()) return line;
    const bool cutsCharacter = static_cast<unsigned char>(line.back()) >= 0x80;
    line.remove_suffix(1);
    return cutsCharacter ? WithoutIncompleteEnd(line) : line;
}

bool IsBlankLine(std::string_view line) {
    return line.find_first_not_of("\r\n ") == line.npos;
}

/// The reply's further lines as list items. The last one is not cut when it has no line feed.
void PutItems(Document& document, std::string_view lines) {
    while (!lines.empty()) {
        const std::size_t lineFeed = lines.find('\n');
        const bool isLast = lineFeed == lines.npos;
        const std::string_view line = isLast ? lines : WithoutLineEnd(lines.substr(0, lineFeed));
        if (!IsBlankLine(line)) document.Put("          <string>").PutText(line).Put("</string>\n");
        lines.remove_prefix(isLast ? lines.size() : lineFeed + 1);
    }
}

void PutQueryResult(Document& document, std::string_view reply) {
    const std::size_t lineFeed = reply.find('\n');
    const bool hasLines = lineFeed != reply.npos;
    const std::string_view message = hasLines ? WithoutLineEnd(reply.substr(0, lineFeed)) : reply;
    document.Put("        <szResponseMessage>").PutText(message).Put("</szResponseMessage>\n");
    if (!hasLines || lineFeed + 1 == reply.size()) return;
    document.Put("         <szResult>\n");
    PutItems(document, reply.substr(lineFeed + 1));
    document.Put("         </szResult>\n");
}

void PutResponseOpening(Document& document, std::string_view method) {
    document.Put("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<soap:Envelope xmlns:xsi=\"")
        .Put(kSchemaInstanceNamespace)
        .Put("\" xmlns:xsd=\"")
        .Put(kSchemaNamespace)
        .Put("\" xmlns:soap=\"")
        .Put(kSoapEnvelopeNamespace)
        .Put("\">\n  <soap:Body>\n    <")
        .Put(method)
        .Put("Response xmlns=\"")
        .Put(kServiceNamespace)
        .Put("\">\n");
}

void PutFaultOpening(Document& document) {
    document
        .Put(
            "<?xml version = '1.0' encoding = 'UTF-8' standalone = 'no'?>\n"
            "<SOAP-ENV:Envelope xmlns:SOAPSDK1='")
        .Put(kSchemaNamespace)
        .Put("' xmlns:SOAPSDK2='")
        .Put(kSchemaInstanceNamespace)
        .Put("' xmlns:SOAPSDK3='")
        .Put(kSoapEncodingNamespace)
        .Put("' xmlns:SOAP-ENV='")
        .Put(kSoapEnvelopeNamespace)
        .Put("'>\n<SOAP-ENV:Body SOAP-ENV:encodingStyle='")
        .Put(kSoapEncodingNamespace)
        .Put("'>\n <SOAP-ENV:Fault>\n    <faultcode>SOAP-ENV:Server</faultcode>\n    <faultstring>");
}

// Code and description stay empty: kept for compatibility.
constexpr char kFaultEnd[] =
    "           <serror:returnCode/>\n"
    "           <serror:serverErrorInfo>\n"
    "              <serror:description></serror:description>\n"
    "              <serror:source>Quorbel errors</serror:source>\n"
    "           </serror:serverErrorInfo>\n"
    "        </serror:errorInfo>\n"
    "    </detail>\n"
    " </SOAP-ENV:Fault>\n"
    "</SOAP-ENV:Body>\n"
    "</SOAP-ENV:Envelope>\n";

}  // namespace

void MakeResponse(const DocumentSink& sink, std::string_view method, std::string_view reply) {
    Document document(sink);
    PutResponseOpening(document, method);
    if (method.find("Query") != method.npos) {
        document.Put("      <").Put(method).Put("Result>\n");
        PutQueryResult(document, reply);
        document.Put("       </").Put(method).Put("Result>\n     </").Put(method).Put("Response>\n  ");
    } else {
        if (reply.ends_with('\n')) reply.remove_suffix(1);
        document.Put("        <").Put(method).Put("Result>").PutText(reply);
        document.Put("</").Put(method).Put("Result>\n    </").Put(method).Put("Response>\n ");
    }
    document.Put("</soap:Body>\n</soap:Envelope>").Finish();
}

void MakeFault(const DocumentSink& sink, std::string_view code, std::string_view text,
               std::string_view hostName) {
    Document document(sink);
    PutFaultOpening(document);
    document.Put(code).Put(code.empty() ? "" : " ").PutText(text);
    document.Put("</faultstring>\n    <faultactor>http://").PutText(hostName);
    document.Put(kServiceDescriptionPath)
        .Put("</faultactor>\n    <detail>\n        <serror:errorInfo xmlns:serror='")
        .Put(kErrorNamespace)
        .Put("'>\n")
        .Put(kFaultEnd)
        .Finish();
}

std::string EscapeXml(std::string_view text, WhiteSpace whiteSpace) {
    std::string escaped;
    const DocumentSink sink = [&](std::string_view piece) { escaped += piece; };
    Document(sink).PutText(text, whiteSpace).Finish();
    return escaped;
}

}  // namespace quorbel
