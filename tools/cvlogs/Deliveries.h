#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/cvlogs/EntryFilter.h"
#include "tools/cvlogs/Logfmt.h"

namespace quorbel {

/// Which requests of the delivery journal are wanted. Texts are patterns of the shell ("*" and "?"), empty
/// for all.
struct DeliveryChoice {
    EntryChoice entries;  ///< of the journal
    bool failed = false;  ///< only what was not answered, or with an HTTP status of 400 and above
    std::string outcome;
    std::string to;
    std::string server;  ///< a part of it is enough
    std::string client;
    std::string method;
    std::string id;
};

/// One request of the journal.
struct DeliveryRecord {
    Logfmt fields;
    int level = 0;     ///< a LogLevel's number
    std::string time;  ///< local, "2026-11-21 17:05:00"

    std::optional<std::int64_t> Number(std::string_view key) const;
    const std::string& Outcome() const { return fields.Value("outcome"); }
    bool HasFailed() const;
};

/// Calls `use` for each wanted request, in the order of their outcomes. A request that was about to be posted
/// and has no outcome comes last, with the outcome "sending": its run was cut off, or is still going on.
void ForEachDelivery(const DeliveryChoice& choice, const std::function<void(const DeliveryRecord&)>& use);

/// The value that so many percent of the values do not exceed; there must be one. Changes their order.
template <class Number>
Number PercentileOf(std::vector<Number>& values, unsigned percent) {
    const std::size_t rank = std::max<std::size_t>((values.size() * percent + 99) / 100, 1) - 1;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(rank), values.end());
    return values[rank];
}

/// How many requests of one kind there were, and how long they took.
struct DeliveryGroup {
    std::int64_t count = 0;
    std::vector<std::int64_t> milliseconds;

    /// The time that so many percent of the requests did not exceed; empty without any time.
    std::optional<std::int64_t> Percentile(unsigned percent) const;
};

/// By server, outcome and method.
using DeliverySummary = std::map<std::vector<std::string>, DeliveryGroup>;
DeliverySummary Summarize(const DeliveryChoice& choice);

}  // namespace quorbel
