#include "tools/wsdl/XmlWriter.h"

#include "soap/Envelopes.h"

namespace quorbel {

XmlWriter::XmlWriter() : document_("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n") {}

void XmlWriter::Indent() {
    document_.append(2 * depth_, ' ');
}

void XmlWriter::Begin(std::string_view element, Attributes attributes, std::string_view end) {
    Indent();
    document_.append("<").append(element);
    for (const auto& [name, value] : attributes) {
        document_.append(" ").append(name).append("=\"").append(EscapeXml(value)).append("\"");
    }
    document_.append(end);
}

void XmlWriter::Text(std::string_view element, std::string_view text) {
    Begin(element, {}, ">");
    document_.append(EscapeXml(text)).append("</").append(element).append(">\n");
}

void XmlWriter::Empty(std::string_view element, Attributes attributes) {
    Begin(element, attributes, "/>\n");
}

XmlElement::XmlElement(XmlWriter& writer, std::string_view name, XmlWriter::Attributes attributes)
    : writer_(writer), name_(name) {
    writer_.Begin(name_, attributes, ">\n");
    ++writer_.depth_;
}

XmlElement::~XmlElement() {
    --writer_.depth_;
    writer_.Indent();
    writer_.document_.append("</").append(name_).append(">\n");
}

}  // namespace quorbel
