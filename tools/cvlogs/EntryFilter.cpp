#include "tools/cvlogs/EntryFilter.h"

#include <sqlite3.h>

#include <algorithm>

#include "tools/operator/ProgressLine.h"

namespace quorbel {

namespace {

bool IsLikePattern(const EntryChoice& choice) {
    return choice.grep.find('%') != choice.grep.npos && IsDatabase(choice.log);
}

// Matches the tags of these levels: few entries have one, and a search is faster than a look at each entry.
std::string TagsFrom(LogLevel lowest) {
    std::string names;
    for (auto level = static_cast<unsigned>(lowest); level <= static_cast<unsigned>(LogLevel::Fatal);
         ++level) {
        names.append(names.empty() ? "" : "|").append(LogLevelName(level));
    }
    return "\\[(" + names + ")\\] ";
}

bool IsLike(std::string_view text, const std::string& pattern) {
    return sqlite3_strlike(pattern.c_str(), std::string(text).c_str(), 0) == 0;
}

bool IsOfModule(std::string_view name, std::string_view module) {
    if (name.empty() || module.empty()) return true;  // the log does not tell, or all are wanted
    return name.starts_with(module) && (name.size() == module.size() || name[module.size()] == '.');
}

}  // namespace

WantedEntries::WantedEntries(const EntryChoice& choice) : choice_(choice) {
    SourceHints hints = {.follow = choice.follow};
    if (!choice.grep.empty() && IsLikePattern(choice)) {
        hints.like = choice.grep;
    } else if (!choice.grep.empty()) {
        pattern_.emplace(choice.grep);
        if (pattern_->IsLocal()) hints.search = &*pattern_;
    }
    if (hints.search == nullptr && choice.level >= LogLevel::Warn) {
        levels_.emplace(TagsFrom(choice.level));
        hints.search = &*levels_;
    }
    source_ = OpenLog(choice.log, hints);
}

bool WantedEntries::Next(LogEntry& entry) {
    while (source_->Next(entry)) {
        if (Passes(entry)) return true;
    }
    HideProgress();
    return false;
}

bool WantedEntries::Passes(const LogEntry& entry) const {
    const int level = static_cast<int>(choice_.level);
    if (choice_.exactLevel && level != 0 ? entry.level != level : entry.level < level) return false;
    if (choice_.since && entry.timestamp < *choice_.since) return false;
    if (choice_.until && entry.timestamp > *choice_.until) return false;
    if (!IsOfModule(entry.module, choice_.log.module)) return false;
    const auto& subs = choice_.subModules;
    if (!subs.empty() && std::find(subs.begin(), subs.end(), SubModuleOf(entry.module)) == subs.end()) {
        return false;
    }
    if (!choice_.timePattern.empty() && !IsLike(entry.time, choice_.timePattern)) return false;
    return !pattern_ || pattern_->Find(entry.message) != Pattern::kNone;
}

}  // namespace quorbel
