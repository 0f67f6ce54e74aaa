#pragma once

#include <string>
#include <utility>

#include "syslib/CVsysEventLogInterface.h"
#include "syslib/LogWriters.h"

/// The event log that writes each entry in the caller's thread, for short-lived programs.
class CVsysEventLogSingleThreaded : public CVsysEventLogInterface {
public:
    CVsysEventLogSingleThreaded(std::string module, std::string configDirectory, std::string furtherName = {})
        : CVsysEventLogInterface(std::move(module), std::move(configDirectory), std::move(furtherName)) {}

protected:
    int Deliver(quorbel::LogLevel level, const std::string& message, int extra,
                const char* userText) override {
        const auto writer = Writer();
        if (!writer) return 0;
        return writer->Write(ModuleName(), static_cast<unsigned>(level), message, extra, userText, 0);
    }
};
