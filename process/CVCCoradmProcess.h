#pragma once

#include "process/CVCProcess.h"
#include "process/CommandRecords.h"

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
