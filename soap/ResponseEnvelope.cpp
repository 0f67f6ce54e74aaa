#include "soap/ResponseEnvelope.h"

#include "soap/ServiceNames.h"
#include "soap/XmlEscape.h"
#include "util/BoundedText.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

std::string OpeningLines(std::string_view method) {
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n") + "<soap:Envelope xmlns:xsi=\"" +
           kSchemaInstanceNamespace + "\" xmlns:xsd=\"" + kSchemaNamespace + "\" xmlns:soap=\"" +
           kSoapEnvelopeNamespace + "\">\n  <soap:Body>\n    <" + std::string(method) + "Response xmlns=\"" +
           kServiceNamespace + "\">\n";
}

/// A line of the reply without its end: the byte before the line feed goes, whatever it is. Servers that end
/// lines with a bare line feed lose a character; when that was part of a longer one, the rest of it goes as
/// well.
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
void AppendItems(std::string& envelope, std::string_view lines) {
    while (!lines.empty()) {
        const std::size_t lineFeed = lines.find('\n');
        const bool isLast = lineFeed == lines.npos;
        const std::string_view line = isLast ? lines : WithoutLineEnd(lines.substr(0, lineFeed));
        if (!IsBlankLine(line)) envelope += "          <string>" + EscapeXml(line) + "</string>\n";
        lines.remove_prefix(isLast ? lines.size() : lineFeed + 1);
    }
}

void AppendQueryResult(std::string& envelope, std::string_view reply) {
    const std::size_t lineFeed = reply.find('\n');
    const bool hasLines = lineFeed != reply.npos;
    const std::string_view message = hasLines ? WithoutLineEnd(reply.substr(0, lineFeed)) : reply;
    envelope += "        <szResponseMessage>" + EscapeXml(message) + "</szResponseMessage>\n";
    if (!hasLines || lineFeed + 1 == reply.size()) return;
    envelope += "         <szResult>\n";
    AppendItems(envelope, reply.substr(lineFeed + 1));
    envelope += "         </szResult>\n";
}

std::string QueryResponse(const std::string& method, std::string_view reply) {
    std::string envelope = OpeningLines(method) + "      <" + method + "Result>\n";
    AppendQueryResult(envelope, reply);
    return envelope + "       </" + method + "Result>\n     </" + method +
           "Response>\n  </soap:Body>\n</soap:Envelope>";
}

std::string TextResponse(const std::string& method, std::string_view reply) {
    if (reply.ends_with('\n')) reply.remove_suffix(1);
    return OpeningLines(method) + "        <" + method + "Result>" + EscapeXml(reply) + "</" + method +
           "Result>\n    </" + method + "Response>\n </soap:Body>\n</soap:Envelope>";
}

}  // namespace

std::string ResponseEnvelope(std::string_view method, std::string_view reply) {
    const std::string name(method);
    return name.find("Query") == name.npos ? TextResponse(name, reply) : QueryResponse(name, reply);
}

}  // namespace quorbel
