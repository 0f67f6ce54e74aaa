#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tools/cvlogs/Deliveries.h"

namespace quorbel {

/// The deliveries of some time as one page for a browser: self-contained HTML without a script.
///
/// Takes requests in the order of their times, one after another, and keeps counts and the newest of those that were
/// not simply delivered: a million of them take some megabytes.
class DeliveryReport {
public:
    void Add(const DeliveryRecord& record);

    /// The page. `title` says which time it covers, `madeAt` when it was made.
    std::string Page(const std::string& title, const std::string& madeAt) const;

    /// What a request counts as; the order is that of the bars, from the bottom up.
    enum class Kind { Answered, Trouble, Refused, Unknown, NotConnected };
    static constexpr std::size_t kKinds = 5;

private:
    using Counts = std::array<std::int64_t, kKinds>;

    struct Server {
        Counts counts{};
        std::vector<std::int32_t> milliseconds;
    };

    static Kind KindOf(const DeliveryRecord& record);

    std::string Tiles() const;
    std::string Bars() const;
    std::string Servers() const;
    std::string Recipients() const;
    std::string Refusals() const;
    std::string Troubles() const;

    Counts counts_{};
    std::map<std::string, Counts> hours_;  ///< by "2026-11-21 17"
    std::map<std::string, Server> servers_;
    std::map<std::string, std::int64_t> recipients_;
    std::int64_t otherRecipients_ = 0;  ///< messages to those for which there was no more room
    std::map<std::pair<std::string, std::string>, std::int64_t> refusals_;  ///< by client and fault
    std::int64_t otherRefusals_ = 0;
    std::deque<DeliveryRecord> troubles_;  ///< the newest, oldest first
    std::int64_t troubleCount_ = 0;
};

}  // namespace quorbel
