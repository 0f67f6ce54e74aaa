#include "tools/cvlogs/LogEntry.h"

#include <algorithm>
#include <ctime>

#include "syslib/LogLevel.h"

namespace quorbel {

namespace {

constexpr std::string_view kTimeForm = "00/00/0000 00:00:00 ";
constexpr std::size_t kTimeLength = kTimeForm.size() - 1;
constexpr std::size_t kMinuteLength = kTimeLength - 3;             // less the seconds
constexpr std::size_t kLongestHead = 255 + sizeof " [CRITICAL] ";  // with the longest name of a module

bool Fits(char form, char c) {
    return form == '0' ? c >= '0' && c <= '9' : c == form;
}

int NumberAt(std::string_view text, std::size_t at, std::size_t digits) {
    int number = 0;
    for (const char c : text.substr(at, digits)) number = number * 10 + (c - '0');
    return number;
}

// The C library takes a microsecond for it, so a minute is converted once.
std::int64_t SecondsOf(std::string_view time) {
    thread_local std::string minute;
    thread_local std::int64_t start = 0;
    if (time.substr(0, kMinuteLength) != minute) {
        minute = time.substr(0, kMinuteLength);
        std::tm local{};
        local.tm_mon = NumberAt(time, 0, 2) - 1;
        local.tm_mday = NumberAt(time, 3, 2);
        local.tm_year = NumberAt(time, 6, 4) - 1900;
        local.tm_hour = NumberAt(time, 11, 2);
        local.tm_min = NumberAt(time, 14, 2);
        local.tm_isdst = -1;
        start = std::mktime(&local);
    }
    return start + NumberAt(time, 17, 2);
}

// The level whose tag, with a blank behind it, the text begins with; 0 when there is none.
int LevelAt(std::string_view text) {
    for (unsigned level = 1; level <= static_cast<unsigned>(LogLevel::Fatal); ++level) {
        const std::string_view tag = LogLevelTag(level);
        if (text.starts_with(tag) && text.substr(tag.size()).starts_with(' ')) return static_cast<int>(level);
    }
    return 0;
}

// Where the tag of the level begins; npos when there is none.
std::size_t FindTag(std::string_view head) {
    for (std::size_t tag = head.find('['); tag != head.npos; tag = head.find('[', tag + 1)) {
        if ((tag == 0 || head[tag - 1] == ' ') && LevelAt(head.substr(tag)) != 0) return tag;
    }
    return head.npos;
}

// Takes module and level off the beginning; what has neither is all message.
void SplitHead(std::string_view rest, LogEntry& entry) {
    const std::string_view head = rest.substr(0, kLongestHead);
    std::size_t tag = FindTag(head);
    if (tag != head.npos) {
        entry.level = LevelAt(head.substr(tag));
    } else if (rest.starts_with(' ')) {
        tag = 0;  // a level without a tag leaves its blank
    } else {
        tag = std::min(head.find("  "), head.size()) + 1;
    }
    const bool hasHead = tag < head.size();
    if (hasHead && tag > 0) entry.module = rest.substr(0, tag - 1);
    const std::size_t tagSize = LogLevelTag(static_cast<unsigned>(entry.level)).size();
    entry.message = hasHead ? rest.substr(tag + tagSize + 1) : rest;
}

}  // namespace

bool BeginsLogEntry(std::string_view text) {
    if (text.size() < kTimeForm.size()) return false;
    for (std::size_t i = 0; i < kTimeForm.size(); ++i) {
        if (!Fits(kTimeForm[i], text[i])) return false;
    }
    return true;
}

LogEntry ParseLogEntry(std::string_view text) {
    LogEntry entry;
    entry.text = text;
    entry.message = text;
    if (!BeginsLogEntry(text)) return entry;
    entry.time = text.substr(0, kTimeLength);
    entry.timestamp = SecondsOf(entry.time);
    SplitHead(text.substr(kTimeForm.size()), entry);
    return entry;
}

}  // namespace quorbel
