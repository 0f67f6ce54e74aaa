#include "tools/cvlogs/LogEntry.h"

#include <algorithm>

#include "syslib/LogLevel.h"

namespace quorbel {

namespace {

constexpr std::string_view kTimeForm = "00/00/0000 00:00:00 ";
constexpr std::size_t kTimeLength = kTimeForm.size() - 1;
constexpr std::size_t kLongestHead = 255 + sizeof " [CRITICAL] ";  // with the longest name of a module

bool Fits(char form, char c) {
    return form == '0' ? c >= '0' && c <= '9' : c == form;
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
    SplitHead(text.substr(kTimeForm.size()), entry);
    return entry;
}

}  // namespace quorbel
