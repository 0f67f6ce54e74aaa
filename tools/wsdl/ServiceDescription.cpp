#include "tools/wsdl/ServiceDescription.h"

#include "soap/Envelopes.h"
#include "tools/wsdl/Notes.h"
#include "tools/wsdl/Schemas.h"

namespace quorbel {

namespace {

constexpr char kService[] = "Quorbel";
constexpr char kPort[] = "QuorbelSoap";  // of the port, its type and its binding
constexpr char kHttpTransport[] = "http://schemas.xmlsoap.org/soap/http";
// Not "errorInfo": generated code would get two classes of that name.
constexpr char kFaultMessage[] = "ServiceFault";

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
