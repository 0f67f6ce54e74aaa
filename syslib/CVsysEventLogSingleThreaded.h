#pragma once

#include "syslib/CVsysEventLogInterface.h"

/// The event log that writes each entry in the caller's thread, for short-lived programs.
class CVsysEventLogSingleThreaded : public CVsysEventLogInterface {
public:
    CVsysEventLogSingleThreaded(std::string module, std::string configDirectory,
                                std::string furtherName = {});

    int Write(quorbel::EventLevel level, const std::string& message, int extra,
              const char* userText) override;
};
