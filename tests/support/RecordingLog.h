#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "syslib/CVLogInterface.h"

namespace quorbel {

/// A log that keeps its entries as texts: "<level> <context>|<message>", or "<level> <message>" without a
/// context.
class RecordingLog : public CVLogInterface {
public:
    std::vector<std::string> entries;

protected:
    int WriteEntry(const Entry& entry, va_list arguments) override {
        va_list again;
        va_copy(again, arguments);
        std::string message(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, entry.format, arguments)),
                            '\0');
        std::vsnprintf(message.data(), message.size() + 1, entry.format, again);
        va_end(again);
        const std::string context = entry.context == nullptr ? "" : entry.context + std::string("|");
        entries.push_back(std::to_string(static_cast<int>(entry.level)) + " " + context + message);
        return 1;
    }
};

}  // namespace quorbel
