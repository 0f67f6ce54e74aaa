#include "syslib/CVsysEventLogSingleThreaded.h"

#include <utility>

using namespace quorbel;

CVsysEventLogSingleThreaded::CVsysEventLogSingleThreaded(std::string module, std::string configDirectory,
                                                         std::string furtherName)
    : CVsysEventLogInterface(std::move(module), std::move(configDirectory), std::move(furtherName)) {}

int CVsysEventLogSingleThreaded::Write(EventLevel level, const std::string& message, int extra,
                                       const char* userText) {
    const auto writer = Writer();
    if (!writer) return 0;
    return writer->Write(ModuleName(), static_cast<unsigned>(level), message, extra, userText, 0);
}
