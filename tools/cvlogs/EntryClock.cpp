#include "tools/cvlogs/EntryClock.h"

#include <ctime>

namespace quorbel {

namespace {

constexpr std::size_t kDayLength = std::string_view("02/01/2024").size();
constexpr std::size_t kMinuteLength = std::string_view("02/01/2024 09:05").size();
constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
// A program that logs by a worker thread notes the time before it waits for its turn.
constexpr std::int64_t kLate = kMinute;
// The clock goes back by no more.
constexpr std::int64_t kLongestStep = kHour;

int NumberAt(std::string_view text, std::size_t at, std::size_t digits) {
    int number = 0;
    for (const char c : text.substr(at, digits)) number = number * 10 + (c - '0');
    return number;
}

std::int64_t OffsetAt(std::time_t moment) {
    std::tm local{};
    localtime_r(&moment, &local);
    return local.tm_gmtoff;
}

}  // namespace

// Midnight of Greenwich, and by how much the place's time is ahead of it around that day.
void EntryClock::UseDay(std::string_view day) {
    if (day == day_) return;
    day_ = day;
    std::tm fields{};
    fields.tm_mon = NumberAt(day, 0, 2) - 1;
    fields.tm_mday = NumberAt(day, 3, 2);
    fields.tm_year = NumberAt(day, 6, 4) - 1900;
    midnight_ = timegm(&fields);
    offsetBefore_ = OffsetAt(midnight_ - kDay);
    offsetAfter_ = OffsetAt(midnight_ + 2 * kDay);
}

// Not by mktime: in the repeated hour it takes the offset that it found in the call before.
void EntryClock::UseMinute(std::string_view minute) {
    if (minute == minute_) return;
    minute_ = minute;
    UseDay(minute.substr(0, kDayLength));
    const std::int64_t local =
        midnight_ + NumberAt(minute, 11, 2) * kHour + NumberAt(minute, 14, 2) * kMinute;
    first_ = second_ = local - offsetBefore_;
    if (offsetBefore_ == offsetAfter_ || OffsetAt(local - offsetAfter_) != offsetAfter_) return;
    second_ = local - offsetAfter_;
    if (OffsetAt(first_) != offsetBefore_) first_ = second_;
}

bool EntryClock::IsRepeated(std::string_view time) {
    UseMinute(time.substr(0, kMinuteLength));
    return first_ != second_;
}

std::int64_t EntryClock::Tell(std::string_view time) {
    UseMinute(time.substr(0, kMinuteLength));
    const int seconds = NumberAt(time, kMinuteLength + 1, 2);
    std::int64_t moment = first_ + seconds;
    const bool isBack = previous_ && moment < *previous_ - kLate;
    if (isBack && second_ + seconds >= *previous_ - kLongestStep) moment = second_ + seconds;
    previous_ = moment;
    return moment;
}

}  // namespace quorbel
