#include "tools/cvlogs/Deliveries.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>

namespace quorbel {

namespace {

constexpr char kSending[] = "sending";
constexpr std::int64_t kFirstHttpError = 400;

bool Matches(const std::string& value, const std::string& pattern) {
    return pattern.empty() || fnmatch(pattern.c_str(), value.c_str(), 0) == 0;
}

bool IsWanted(const DeliveryRecord& record, const DeliveryChoice& choice) {
    const Logfmt& fields = record.fields;
    const std::string server = choice.server.empty() ? "" : "*" + choice.server + "*";
    return (!choice.failed || record.HasFailed()) && Matches(record.Outcome(), choice.outcome) &&
           Matches(fields.Value("to"), choice.to) && Matches(fields.Value("server"), server) &&
           Matches(fields.Value("client"), choice.client) && Matches(fields.Value("method"), choice.method) &&
           Matches(fields.Value("id"), choice.id);
}

// "2026-11-21 17:05:00" of the field `at`, which has a fraction and an offset behind it.
std::string TimeOf(const Logfmt& fields, const LogEntry& entry) {
    constexpr std::size_t kLength = 19;
    std::string time = fields.Value("at").substr(0, kLength);
    if (time.size() < kLength) return std::string(entry.time);
    std::replace(time.begin(), time.end(), 'T', ' ');
    return time;
}

}  // namespace

std::optional<std::int64_t> DeliveryRecord::Number(std::string_view key) const {
    const std::string& text = fields.Value(key);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool DeliveryRecord::HasFailed() const {
    return Outcome() != "answered" || Number("http").value_or(0) >= kFirstHttpError;
}

void ForEachDelivery(const DeliveryChoice& choice, const std::function<void(const DeliveryRecord&)>& use) {
    WantedEntries entries(choice.entries);
    std::map<std::string, DeliveryRecord> sending;  // by id
    LogEntry entry;
    while (entries.Next(entry)) {
        DeliveryRecord record{Logfmt(entry.message), entry.level, {}};
        if (record.Outcome().empty()) continue;
        record.time = TimeOf(record.fields, entry);
        const std::string id = record.fields.Value("id");
        if (record.Outcome() == kSending) {
            sending.insert_or_assign(id, std::move(record));
            continue;
        }
        sending.erase(id);
        if (IsWanted(record, choice)) use(record);
    }
    std::vector<const DeliveryRecord*> left;
    left.reserve(sending.size());
    for (const auto& [id, record] : sending) left.push_back(&record);
    std::stable_sort(left.begin(), left.end(), [](auto* a, auto* b) { return a->time < b->time; });
    for (const DeliveryRecord* record : left) {
        if (IsWanted(*record, choice)) use(*record);
    }
}

std::optional<std::int64_t> DeliveryGroup::Percentile(unsigned percent) const {
    if (milliseconds.empty()) return std::nullopt;
    std::vector<std::int64_t> values = milliseconds;
    return PercentileOf(values, percent);
}

DeliverySummary Summarize(const DeliveryChoice& choice) {
    DeliverySummary summary;
    ForEachDelivery(choice, [&](const DeliveryRecord& record) {
        const Logfmt& fields = record.fields;
        auto& group = summary[{fields.Value("server"), record.Outcome(), fields.Value("method")}];
        ++group.count;
        if (const auto time = record.Number("ms")) group.milliseconds.push_back(*time);
    });
    return summary;
}

}  // namespace quorbel
