#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// Reads the local times of a log's entries, which are told in the order they were written in: that order
/// shows which of two moments is meant in the hour that comes twice at the end of summer time. The first
/// entry counts as of the first pass when it lies there. For one log and one thread.
class EntryClock {
public:
    /// Seconds since the epoch of a time as in "02/01/2024 09:05:03", in this form only.
    std::int64_t Tell(std::string_view time);

    /// Whether the time, of the same form, comes twice.
    bool IsRepeated(std::string_view time);

private:
    void UseDay(std::string_view day);
    void UseMinute(std::string_view minute);

    // The day and the minute that were converted last: the C library takes a microsecond for either.
    std::string day_;
    std::int64_t midnight_ = 0;
    std::int64_t offsetBefore_ = 0;
    std::int64_t offsetAfter_ = 0;
    std::string minute_;
    std::int64_t first_ = 0;
    std::int64_t second_ = 0;               // as first_ unless the minute comes twice
    std::optional<std::int64_t> previous_;  // the entry before
};

}  // namespace quorbel
