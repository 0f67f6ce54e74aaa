#include "tools/wsdl/Schemas.h"

#include <string>

#include "soap/Envelopes.h"
#include "tools/wsdl/Notes.h"
#include "tools/wsdl/RequestElements.h"

namespace quorbel {

namespace {

constexpr char kSequence[] = "xs:sequence";
constexpr char kTextList[] = "ArrayOfString";

void WriteNote(XmlWriter& xml, std::string_view note) {
    const XmlElement annotation(xml, "xs:annotation");
    xml.Text("xs:documentation", note);
}

void WriteDeclaration(XmlWriter& xml, XmlWriter::Attributes attributes, std::string_view note) {
    if (note.empty()) {
        xml.Empty("xs:element", attributes);
    } else {
        const XmlElement element(xml, "xs:element", attributes);
        WriteNote(xml, note);
    }
}

/// An element of a request or of an item. Never nillable: clients would then send a nil element for every
/// value that they leave out.
void WriteRequestElement(XmlWriter& xml, const Method& method, const Field& field) {
    const std::string type = IsItem(field) ? OwnName(field.element) : std::string(TypeOf(field));
    const std::string maxOccurs = std::to_string(MaxOccurs(field));
    const std::string_view minOccurs = IsRequired(method, field) ? "1" : "0";
    WriteDeclaration(
        xml, {{"minOccurs", minOccurs}, {"maxOccurs", maxOccurs}, {"name", field.element}, {"type", type}},
        NoteOf(field));
}

void WriteRequest(XmlWriter& xml, const Method& method) {
    const XmlElement element(xml, "xs:element", {{"name", method.name}});
    const XmlElement type(xml, "xs:complexType");
    const XmlElement sequence(xml, kSequence);
    for (const Field& field : RequestElementsOf(method)) WriteRequestElement(xml, method, field);
}

void WriteAnswer(XmlWriter& xml, const Method& method) {
    const bool isQuery = method.name.find("Query") != method.name.npos;
    const std::string name(method.name);
    const XmlElement element(xml, "xs:element", {{"name", name + "Response"}});
    const XmlElement type(xml, "xs:complexType");
    const XmlElement sequence(xml, kSequence);
    xml.Empty("xs:element",
              {{"name", name + "Result"}, {"type", isQuery ? OwnName(kQueryResultType) : "xs:string"}});
}

void WriteItemTypes(XmlWriter& xml, const Method& method) {
    for (const Field& item : method.fields) {
        if (!IsItem(item)) continue;
        const XmlElement type(xml, "xs:complexType", {{"name", item.element}});
        const XmlElement sequence(xml, kSequence);
        for (const Field& member : MembersOf(item, method.fields)) WriteRequestElement(xml, method, member);
    }
}

void WriteQueryResultTypes(XmlWriter& xml) {
    {
        const XmlElement type(xml, "xs:complexType", {{"name", kQueryResultType}});
        const XmlElement sequence(xml, kSequence);
        xml.Empty("xs:element", {{"name", "szResponseMessage"}, {"type", "xs:string"}});
        xml.Empty("xs:element", {{"minOccurs", "0"}, {"name", "szResult"}, {"type", OwnName(kTextList)}});
    }
    const XmlElement type(xml, "xs:complexType", {{"name", kTextList}});
    const XmlElement sequence(xml, kSequence);
    xml.Empty("xs:element",
              {{"minOccurs", "0"}, {"maxOccurs", "unbounded"}, {"name", "string"}, {"type", "xs:string"}});
}

void WriteFaultDetail(XmlWriter& xml) {
    const XmlElement detail(xml, "xs:element", {{"name", "errorInfo"}});
    const XmlElement type(xml, "xs:complexType");
    const XmlElement sequence(xml, kSequence);
    xml.Empty("xs:element", {{"name", "returnCode"}, {"type", "xs:string"}});
    const XmlElement info(xml, "xs:element", {{"name", "serverErrorInfo"}});
    const XmlElement infoType(xml, "xs:complexType");
    const XmlElement infoSequence(xml, kSequence);
    xml.Empty("xs:element", {{"name", "description"}, {"type", "xs:string"}});
    xml.Empty("xs:element", {{"name", "source"}, {"type", "xs:string"}});
}

}  // namespace

std::string OwnName(std::string_view name) {
    return "tns:" + std::string(name);
}

void WriteSchemas(XmlWriter& xml) {
    {
        const XmlElement schema(
            xml, "xs:schema", {{"elementFormDefault", "qualified"}, {"targetNamespace", kServiceNamespace}});
        for (const Method& method : Methods()) {
            WriteRequest(xml, method);
            WriteAnswer(xml, method);
            WriteItemTypes(xml, method);
        }
        WriteQueryResultTypes(xml);
    }
    const XmlElement schema(xml, "xs:schema",
                            {{"elementFormDefault", "qualified"}, {"targetNamespace", kErrorNamespace}});
    WriteFaultDetail(xml);
}

}  // namespace quorbel
