#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "process/CommandParameters.h"
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
