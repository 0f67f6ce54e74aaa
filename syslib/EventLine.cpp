#include "syslib/EventLine.h"

#include "syslib/EventLevel.h"
#include "syslib/EventTime.h"

namespace quorbel {

std::string EventLine(std::string_view module, unsigned level, std::string_view message, std::time_t time) {
    std::string line;
    FormatEventTime(time, &line);
    line.reserve(line.size() + module.size() + message.size() + 16);
    line += ' ';
    if (!module.empty()) line.append(module) += ' ';
    line.append(EventLevelTag(level)) += ' ';
    return line.append(message);
}

}  // namespace quorbel
