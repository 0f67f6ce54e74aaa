#pragma once

#include "process/CVCProcess.h"
#include "process/CommandRecords.h"

/// Sends messages, message queries and confirmations. Alone it prints outcomes to standard output.
class CVCCommandProcess : public virtual CVCProcess {
public:
    /// `parameters` is borrowed: it is read at each run and must outlive the object.
    explicit CVCCommandProcess(const quorbel::MessagingParameters* parameters) : parameters_(parameters) {}

    /// Prints the result line: the code, the job id ("99999999" without one) and the text in quotes.
    void ShowResult(std::string_view text, std::string_view code) override;
    void ShowReply(std::string_view text) override;

    /// The last result line; empty while nothing failed.
    const char* ResultLine() const { return resultLine_; }

    /// Builds and sends the request's command, or one command for each recipient up to the first empty one.
    void RunMessaging();

protected:
    /// Rewrites the result line (at most 1023 bytes) and returns it.
    const char* FormatResultLine(std::string_view text, std::string_view code);
    void ForgetResult() { resultLine_[0] = '\0'; }

private:
    void SendCommand(std::string_view recipient);

    char resultLine_[1024] = {};
    const quorbel::MessagingParameters* parameters_;
};
