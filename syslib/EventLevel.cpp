#include "syslib/EventLevel.h"

#include <iterator>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

struct LevelText {
    std::string_view name;
    std::string_view tag;
};

constexpr LevelText kLevelTexts[] = {
    {"NONE", ""},       {"TRACE", "[TRACE]"}, {"DEBUG", "[DEBUG]"},       {"INFO", "[INFO]"},
    {"WARN", "[WARN]"}, {"ERROR", "[ERROR]"}, {"CRITICAL", "[CRITICAL]"}, {"FATAL", "[FATAL]"},
};
static_assert(std::size(kLevelTexts) == static_cast<unsigned>(EventLevel::Fatal) + 1);

constexpr struct {
    const char* text;
    EventLevel level;
} kSpellings[] = {
    {"trace", EventLevel::Trace},    {"debug", EventLevel::Debug},       {"infor", EventLevel::Info},
    {"info", EventLevel::Info},      {"information", EventLevel::Info},  {"warni", EventLevel::Warn},
    {"warn", EventLevel::Warn},      {"warning", EventLevel::Warn},      {"error", EventLevel::Error},
    {"criti", EventLevel::Critical}, {"critical", EventLevel::Critical}, {"fatal", EventLevel::Fatal},
};

constexpr struct {
    int code;
    EventLevel level;
} kCodes[] = {{17, EventLevel::Error}, {18, EventLevel::Warn}, {19, EventLevel::Info}};

const LevelText& TextOf(unsigned level) {
    return kLevelTexts[level < std::size(kLevelTexts) ? level : 0];
}

}  // namespace

EventLevel ParseEventLevel(std::string_view text, UnknownLevel unknown) {
    for (const auto& spelling : kSpellings) {
        if (EqualNoCase(text, spelling.text)) return spelling.level;
    }
    return unknown == UnknownLevel::None ? EventLevel::None : EventLevel::Warn;
}

std::string_view EventLevelName(unsigned level) {
    return TextOf(level).name;
}

std::string_view EventLevelTag(unsigned level) {
    return TextOf(level).tag;
}

EventLevel EventLevelOfCode(int code) {
    for (const auto& row : kCodes) {
        if (row.code == code) return row.level;
    }
    return EventLevel::Trace;
}

}  // namespace quorbel
