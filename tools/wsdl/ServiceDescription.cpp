#include "tools/wsdl/ServiceDescription.h"

#include "soap/Envelopes.h"
#include "tools/wsdl/Notes.h"
#include "tools/wsdl/RequestElements.h"
#include "tools/wsdl/XmlWriter.h"

namespace quorbel {

namespace {

constexpr char kSequence[] = "xs:sequence";
constexpr char kQueryResultType[] = "QueryResult";  // a message and a list of texts
constexpr char kTextList[] = "ArrayOfString";

constexpr char kService[] = "Quorbel";
constexpr char kPort[] = "QuorbelSoap";  // of the port, its type and its binding
constexpr char kHttpTransport[] = "http://schemas.xmlsoap.org/soap/http";
// Not "errorInfo": generated code would get two classes of that name.
constexpr char kFaultMessage[] = "ServiceFault";

/// A name of the service's own namespace.
std::string OwnName(std::string_view name) {
    return "tns:" + std::string(name);
}

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

/// The service's requests and answers, and the detail of its faults.
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

struct Names {
    explicit Names(const Method& method)
        : operation(method.name),
          answer(operation + "Response"),
          in(operation + "SoapIn"),
          out(operation + "SoapOut") {}
    std::string operation;  // also the request's element
    std::string answer;
    std::string in;  // messages
    std::string out;
};

void WriteMessage(XmlWriter& xml, std::string_view name, std::string_view part, std::string_view element) {
    const XmlElement message(xml, "wsdl:message", {{"name", name}});
    xml.Empty("wsdl:part", {{"name", part}, {"element", element}});
}

void WriteMessages(XmlWriter& xml) {
    for (const Method& method : Methods()) {
        const Names names(method);
        WriteMessage(xml, names.in, "parameters", OwnName(names.operation));
        WriteMessage(xml, names.out, "parameters", OwnName(names.answer));
    }
    WriteMessage(xml, kFaultMessage, "fault", "err:errorInfo");
}

void WritePortType(XmlWriter& xml) {
    const XmlElement portType(xml, "wsdl:portType", {{"name", kPort}});
    for (const Method& method : Methods()) {
        const Names names(method);
        const XmlElement operation(xml, "wsdl:operation", {{"name", names.operation}});
        xml.Text("wsdl:documentation", NoteOf(method));
        xml.Empty("wsdl:input", {{"message", OwnName(names.in)}});
        xml.Empty("wsdl:output", {{"message", OwnName(names.out)}});
        xml.Empty("wsdl:fault", {{"name", kFaultMessage}, {"message", OwnName(kFaultMessage)}});
    }
}

void WriteLiteralBody(XmlWriter& xml, std::string_view direction) {
    const XmlElement message(xml, direction);
    xml.Empty("soap:body", {{"use", "literal"}});
}

void WriteBoundOperation(XmlWriter& xml, const Method& method) {
    const XmlElement operation(xml, "wsdl:operation", {{"name", method.name}});
    xml.Empty("soap:operation",
              {{"soapAction", std::string(kServiceNamespace) + "/" + std::string(method.name)},
               {"style", "document"}});
    WriteLiteralBody(xml, "wsdl:input");
    WriteLiteralBody(xml, "wsdl:output");
    const XmlElement fault(xml, "wsdl:fault", {{"name", kFaultMessage}});
    xml.Empty("soap:fault", {{"name", kFaultMessage}, {"use", "literal"}});
}

void WriteBinding(XmlWriter& xml) {
    const XmlElement binding(xml, "wsdl:binding", {{"name", kPort}, {"type", OwnName(kPort)}});
    xml.Empty("soap:binding", {{"style", "document"}, {"transport", kHttpTransport}});
    for (const Method& method : Methods()) WriteBoundOperation(xml, method);
}

void WriteService(XmlWriter& xml) {
    const XmlElement service(xml, "wsdl:service", {{"name", kService}});
    const XmlElement port(xml, "wsdl:port", {{"name", kPort}, {"binding", OwnName(kPort)}});
    xml.Empty("soap:address", {{"location", kEndpointPlaceholder}});
}

}  // namespace

std::string ServiceDescription() {
    XmlWriter xml;
    {
        const XmlElement definitions(xml, "wsdl:definitions",
                                     {{"name", kService},
                                      {"targetNamespace", kServiceNamespace},
                                      {"xmlns:wsdl", "http://schemas.xmlsoap.org/wsdl/"},
                                      {"xmlns:soap", "http://schemas.xmlsoap.org/wsdl/soap/"},
                                      {"xmlns:xs", kSchemaNamespace},
                                      {"xmlns:tns", kServiceNamespace},
                                      {"xmlns:err", kErrorNamespace}});
        xml.Text("wsdl:documentation", ServiceNote());
        {
            const XmlElement types(xml, "wsdl:types");
            WriteSchemas(xml);
        }
        WriteMessages(xml);
        WritePortType(xml);
        WriteBinding(xml);
        WriteService(xml);  // last: some importers refuse it anywhere else
    }
    return xml.Document();
}

}  // namespace quorbel
