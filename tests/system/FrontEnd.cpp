#include "tests/system/FrontEnd.h"

#include <expat.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace quorbel {

namespace fs = std::filesystem;

namespace {

constexpr char kHeader[] = "Content-type: text/xml\n\n";

constexpr char kFault[] = R"(<?xml version = '1.0' encoding = 'UTF-8' standalone = 'no'?>
<SOAP-ENV:Envelope xmlns:SOAPSDK1='http://www.w3.org/2001/XMLSchema' xmlns:SOAPSDK2='http://www.w3.org/2001/XMLSchema-instance' xmlns:SOAPSDK3='http://schemas.xmlsoap.org/soap/encoding/' xmlns:SOAP-ENV='http://schemas.xmlsoap.org/soap/envelope/'>
<SOAP-ENV:Body SOAP-ENV:encodingStyle='http://schemas.xmlsoap.org/soap/encoding/'>
 <SOAP-ENV:Fault>
    <faultcode>SOAP-ENV:Server</faultcode>
    <faultstring>{FAULT}</faultstring>
    <faultactor>http://{HOST}/quorbel.wsdl</faultactor>
    <detail>
        <serror:errorInfo xmlns:serror='http://quorbel.example/error/'>
           <serror:returnCode/>
           <serror:serverErrorInfo>
              <serror:description></serror:description>
              <serror:source>Quorbel errors</serror:source>
           </serror:serverErrorInfo>
        </serror:errorInfo>
    </detail>
 </SOAP-ENV:Fault>
</SOAP-ENV:Body>
</SOAP-ENV:Envelope>
)";

std::string HostName() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

/// Replaces or, for "-NAME", removes a variable.
void Set(std::vector<std::string>& environment, const std::string& variable) {
    const bool removes = variable.starts_with('-');
    const std::string name = removes ? variable.substr(1) + "=" : variable.substr(0, variable.find('=') + 1);
    std::erase_if(environment, [&](const std::string& old) { return old.starts_with(name); });
    if (!removes) environment.push_back(variable);
}

}  // namespace

FrontEnd::FrontEnd() {
    site_.Write("config/dir", "spool_dir:\t\t" + site_ / "spool" + "\nlog_dir:\t\t" + site_ / "logs" + "\n");
    site_.Write(
        "config/cvlogs.ini",
        "[main]\n[SOAP]\nwriter=file\nlevel=trace\nfilePath=" + site_ / "logs/soap_log.txt" +
            "\nautoAppend=1\nbytesPerFiles=50000000\n[Deliveries]\nwriter=file\nlevel=info\nfilePath=" +
            site_ / "logs/deliveries_log.txt" + "\nbytesPerFiles=50000000\n");
    fs::create_directories(site_ / "logs");
    fs::create_directories(site_ / "web/cgi-bin");
    fs::create_directory_symlink("../config", site_ / "web/config");
}

ProgramResult FrontEnd::Serve(const std::string& body, const std::vector<std::string>& environment) const {
    return ServeWith(QUORBEL_SOAP, body, environment);
}

ProgramResult FrontEnd::ServeWith(const std::string& program, const std::string& body,
                                  const std::vector<std::string>& environment,
                                  const std::vector<std::string>& arguments) const {
    return RunProgram({.program = program,
                       .arguments = arguments,
                       .environment = CgiVariables(body, environment),
                       .directory = site_ / "web/cgi-bin",
                       .input = body});
}

std::vector<std::string> CgiVariables(const std::string& body, const std::vector<std::string>& changes) {
    std::vector<std::string> variables = {"REQUEST_METHOD=POST",
                                          "CONTENT_LENGTH=" + std::to_string(body.size())};
    for (const auto& change : changes) Set(variables, change);
    return variables;
}

std::string MessageTo(const std::string& url, const std::string& fields) {
    return "<Envelope><Body><SendStdMessage><szURL>" + url +
           "</szURL><szRecipientName>oncall</szRecipientName>" + fields +
           "</SendStdMessage></Body></Envelope>";
}

std::string SecondUrl(const std::string& url) {
    return "<szURL2>" + url + "</szURL2>";
}

std::string DeleteGroupAt(const std::string& url) {
    return "<DeleteGroup><szURL>" + url +
           "</szURL><szAdminName>adm</szAdminName><szAdminPassword>secret</szAdminPassword>"
           "<szGroupName>Ops</szGroupName></DeleteGroup>";
}

std::string BodyOf(const ProgramResult& result) {
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output.starts_with(kHeader)) << result.output;
    return result.output.substr(std::min(result.output.size(), sizeof kHeader - 1));
}

void ExpectWellFormed(const std::string& text) {
    if (text.empty()) return;
    const XML_Parser parser = XML_ParserCreate(nullptr);
    EXPECT_EQ(XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE), XML_STATUS_OK)
        << XML_ErrorString(XML_GetErrorCode(parser)) << " in\n"
        << text;
    XML_ParserFree(parser);
}

std::string FaultDocument(const std::string& faultString) {
    return ReplaceAll(ReplaceAll(kFault, "{HOST}", HostName()), "{FAULT}", faultString);
}

std::string ReplaceAll(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

}  // namespace quorbel
