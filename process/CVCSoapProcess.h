#pragma once

#include "process/CVCProcess.h"

namespace quorbel {

/// What a run is for; one byte, as programs that read it know.
enum class RunMode : unsigned char { Administration = 0, Messaging = 1 };

}  // namespace quorbel

/// Runs a request's command and routes every outcome to the SOAP answer.
///
/// A reply becomes the response. A failed send becomes a fault in an administration run; in a messaging run
/// it becomes a response that carries the transport's error text, and the "2012" result line is only kept.
class CVCSoapProcess : public CVCCommandProcess, public CVCCoradmProcess {
public:
    CVCSoapProcess(const quorbel::MessagingParameters* message,
                   const quorbel::AdministrationRequest& administration)
        : CVCCommandProcess(message), CVCCoradmProcess(administration) {}

    void Run(quorbel::RunMode mode);
    /// The last reply of a messaging run; empty before any run.
    const std::string& ResultText() const { return resultText_; }

    /// Forgets what a run left: its log, its result and its mode.
    void Reset();

    void ShowResult(std::string_view text, std::string_view code) override;
    void ShowReply(std::string_view text) override;

private:
    quorbel::RunMode mode_ = quorbel::RunMode::Administration;
    std::string resultText_;
};

/// The only process object of a run. Constructed from the addresses of the records alone, so it may stand
/// before them; request translation runs it.
extern CVCSoapProcess soapProcess;
