#pragma once

#include "syslib/CVsysEventLogWriterInterface.h"

namespace quorbel {

/// Writes entries to standard error, each as one line; a web server keeps that stream in its error log.
/// Standard output is never used: it is the answer to the client.
class StandardErrorWriter : public CVsysEventLogWriterInterface {
public:
    /// No key means anything here.
    bool setProperty(const std::string& key, const std::string& value) override;
    int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
               const char* userText, std::time_t time) override;
    bool isReady() override;
};

}  // namespace quorbel
