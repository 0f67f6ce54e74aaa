#include "syslib/LogLevel.h"

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
static_assert(std::size(kLevelTexts) == static_cast<unsigned>(LogLevel::Fatal) + 1);

constexpr struct {
    const char* text;
    LogLevel level;
} kSpellings[] = {
    {"trace", LogLevel::Trace},    {"debug", LogLevel::Debug},       {"infor", LogLevel::Info},
    {"info", LogLevel::Info},      {"information", LogLevel::Info},  {"warni", LogLevel::Warn},
    {"warn", LogLevel::Warn},      {"warning", LogLevel::Warn},      {"error", LogLevel::Error},
    {"criti", LogLevel::Critical}, {"critical", LogLevel::Critical}, {"fatal", LogLevel::Fatal},
};

constexpr struct {
    int code;
    LogLevel level;
} kCodes[] = {{17, LogLevel::Error}, {18, LogLevel::Warn}, {19, LogLevel::Info}};

const LevelText& TextOf(unsigned level) {
    return kLevelTexts[level < std::size(kLevelTexts) ? level : 0];
}

}  // namespace

LogLevel ParseLogLevel(std::string_view text, UnknownLevel unknown) {
    for (const auto& spelling : kSpellings) {
        if (EqualNoCase(text, spelling.text)) return spelling.level;
    }
    return unknown == UnknownLevel::None ? LogLevel::None : LogLevel::Warn;
}

std::string_view LogLevelName(unsigned level) {
    return TextOf(level).name;
}

std::string_view LogLevelTag(unsigned level) {
    return TextOf(level).tag;
}

LogLevel LogLevelOfCode(int code) {
    for (const auto& row : kCodes) {
        if (row.code == code) return row.level;
    }
    return LogLevel::Trace;
}

}  // namespace quorbel
