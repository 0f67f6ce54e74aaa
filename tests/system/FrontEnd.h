#pragma once

#include <string>
#include <vector>

#include "tests/support/ProgramRun.h"
#include "tests/support/TempDir.h"

namespace quorbel {

/// A site of its own with the real front end in it, for one test: configuration, logs and the directory of
/// CGI programs, laid out as an operator has them. Logs everything (level trace).
class FrontEnd {
public:
    FrontEnd();

    /// Serves one request in a real process: `environment` replaces the usual REQUEST_METHOD=POST and
    /// CONTENT_LENGTH, and "-NAME" removes one.
    ProgramResult Serve(const std::string& body, const std::vector<std::string>& environment = {}) const;
    /// The same with another program file and arguments.
    ProgramResult ServeWith(const std::string& program, const std::string& body,
                            const std::vector<std::string>& environment = {},
                            const std::vector<std::string>& arguments = {}) const;

    const TempDir& Site() const { return site_; }
    std::string Log() const { return ReadFile(site_ / "logs/soap_log.txt"); }
    /// The delivery journal, kept at level info.
    std::string Journal() const { return ReadFile(site_ / "logs/deliveries_log.txt"); }

private:
    TempDir site_;
};

/// REQUEST_METHOD=POST and CONTENT_LENGTH with the changes of FrontEnd::Serve.
std::vector<std::string> CgiVariables(const std::string& body, const std::vector<std::string>& changes);

/// A request for a message to "oncall" by way of the server at `url`, with further elements.
std::string MessageTo(const std::string& url, const std::string& fields = {});
/// An element for a second server.
std::string SecondUrl(const std::string& url);
/// A request to delete the group "Ops".
std::string DeleteGroupAt(const std::string& url);

/// What follows the CGI header; fails the test when the header is not the one told.
std::string BodyOf(const ProgramResult& result);
/// Fails the test unless the text is empty or one XML document.
void ExpectWellFormed(const std::string& text);

/// The whole fault document for a fault string.
std::string FaultDocument(const std::string& faultString);

std::string ReplaceAll(std::string text, const std::string& what, const std::string& with);

}  // namespace quorbel
