#include "soap/FaultEnvelope.h"

#include "soap/ServiceNames.h"

namespace quorbel {

namespace {

std::string OpeningLines() {
    return std::string("<?xml version = '1.0' encoding = 'UTF-8' standalone = 'no'?>\n") +
           "<SOAP-ENV:Envelope xmlns:SOAPSDK1='" + kSchemaNamespace + "' xmlns:SOAPSDK2='" +
           kSchemaInstanceNamespace + "' xmlns:SOAPSDK3='" + kSoapEncodingNamespace + "' xmlns:SOAP-ENV='" +
           kSoapEnvelopeNamespace + "'>\n<SOAP-ENV:Body SOAP-ENV:encodingStyle='" + kSoapEncodingNamespace +
           "'>\n";
}

// Code and description stay empty: clients read the fault string, which carries both.
constexpr char kDetailLines[] =
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

std::string FaultEnvelope(std::string_view faultString, std::string_view hostName) {
    std::string envelope = OpeningLines();
    envelope += " <SOAP-ENV:Fault>\n    <faultcode>SOAP-ENV:Server</faultcode>\n    <faultstring>";
    envelope += faultString;
    envelope += "</faultstring>\n    <faultactor>http://";
    envelope += hostName;
    envelope += kServiceDescriptionPath;
    envelope += "</faultactor>\n    <detail>\n        <serror:errorInfo xmlns:serror='";
    envelope += kErrorNamespace;
    envelope += "'>\n";
    envelope += kDetailLines;
    return envelope;
}

}  // namespace quorbel
