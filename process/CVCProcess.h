#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "process/CommandRecords.h"
#include "process/HttpPoster.h"

class CVLogInterface;

/// Common base of the objects that turn a translated request into a server command, send it and show the
/// outcome.
///
/// Not thread-safe. The event log is borrowed and must outlive the object; null means no logging.
class CVCProcess {
public:
    // The order of the virtual operations is fixed: programs built against this class know it.
    virtual void SetEventLog(CVLogInterface* log);
    /// The certificate bundle for HTTPS; null or empty means the poster's default.
    virtual void SetCaFilePath(const char* path);
    /// Hook: builds the command for one member of the request before it is sent. Nothing here.
    virtual void PrepareCommand(std::size_t member);
    /// Hook: releases the command that was sent. Nothing here.
    virtual void FinishCommand();
    /// Posts the command to `url`, or to `url2` when that fails, and shows the reply. A failure is reported
    /// first, as code "2012". Gives the poster's result and, when asked, a copy of the output: the reply,
    /// followed by the transport's error text after a failure. A command that lacks a line that it needs is not
    /// posted and fails as out of memory.
    virtual int Send(quorbel::CommandParameters& command, std::string_view url, std::string_view url2,
                     std::string* outputCopy = nullptr);
    /// Shows the formatted text (at most 2047 bytes) under `code`; nothing for a null or empty format.
    [[gnu::format(printf, 3, 4)]] virtual void ReportError(const char* code, const char* format, ...);
    virtual ~CVCProcess() = default;
    virtual void ShowResult(std::string_view text, std::string_view code) = 0;
    virtual void ShowReply(std::string_view text) = 0;

    /// What became of the last command that was sent; nothing before the first.
    const std::optional<quorbel::PostReport>& LastPost() const { return lastPost_; }
    /// The first 200 bytes of what it brought.
    const std::string& LastOutput() const { return lastOutput_; }

protected:
    CVCProcess() = default;
    void ForgetPost();
    CVCProcess(const CVCProcess&) = delete;
    CVCProcess& operator=(const CVCProcess&) = delete;

private:
    void ReportFailure(const char* output);

    std::string caFilePath_;
    CVLogInterface* log_ = nullptr;
    std::optional<quorbel::PostReport> lastPost_;
    std::string lastOutput_;
};

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

/// Sends administration requests.
class CVCCoradmProcess : public virtual CVCProcess {
public:
    /// The request's records are read at each run and must outlive the object.
    explicit CVCCoradmProcess(const quorbel::AdministrationRequest& request) : request_(request) {}

    /// Replaces the request's second address for every send while it is not empty.
    void SetFailoverUrl(const std::string& url) { failoverUrl_ = url; }

    void PrepareCommand(std::size_t member) override;
    void FinishCommand() override;

    /// Builds and sends the request's command; a membership word sends one for each member up to the first
    /// empty name, and stops at the first that fails.
    void RunAdministration();

private:
    int SendCommand(std::size_t member);

    quorbel::AdministrationRequest request_;
    std::string failoverUrl_;
    quorbel::CommandParameters command_;
};
