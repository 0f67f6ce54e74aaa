#include "tools/cvlogs/DeliveryReport.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <string_view>

#include "soap/Envelopes.h"

namespace quorbel {

namespace {

using Text = std::string;
using Kind = DeliveryReport::Kind;

constexpr std::size_t kMostNames = 100000;  ///< of recipients, and of pairs of client and fault
constexpr std::size_t kShownNames = 20;
constexpr std::size_t kShownTroubles = 1000;
constexpr std::size_t kMostBars = 72;  ///< more hours than these are shown as days

constexpr const char* kKindNames[DeliveryReport::kKinds] = {
    "answered", "answered by the second server or with an error", "refused", "unknown", "not connected"};

std::int64_t Total(const std::array<std::int64_t, DeliveryReport::kKinds>& counts) {
    return std::accumulate(counts.begin(), counts.end(), std::int64_t{0});
}

/// Counts `name`, or what there is no more room for in `others`.
template <class Key>
void CountName(std::map<Key, std::int64_t>& names, std::int64_t& others, const Key& name) {
    const auto known = names.find(name);
    if (known != names.end()) {
        ++known->second;
    } else if (names.size() < kMostNames) {
        names.emplace(name, 1);
    } else {
        ++others;
    }
}

/// The most frequent names, most first.
template <class Key>
std::vector<std::pair<Key, std::int64_t>> Busiest(const std::map<Key, std::int64_t>& names) {
    std::vector<std::pair<Key, std::int64_t>> sorted(names.begin(), names.end());
    const auto end = sorted.begin() + static_cast<std::ptrdiff_t>(std::min(kShownNames, sorted.size()));
    std::partial_sort(sorted.begin(), end, sorted.end(),
                      [](const auto& left, const auto& right) { return left.second > right.second; });
    sorted.erase(end, sorted.end());
    return sorted;
}

Text Cell(const Text& text) {
    return "<td>" + EscapeXml(text) + "</td>";
}
Text NumberCell(std::int64_t number) {
    return "<td class=\"number\">" + std::to_string(number) + "</td>";
}
Text Head(const Text& text) {
    return "<th scope=\"row\">" + EscapeXml(text) + "</th>";
}

Text Table(std::initializer_list<const char*> columns, const Text& rows) {
    Text text = "<div class=\"scroll\"><table class=\"stack\"><thead><tr>";
    for (const char* column : columns) text += "<th scope=\"col\">" + Text(column) + "</th>";
    return text + "</tr></thead>\n<tbody>\n" + rows + "</tbody></table></div>\n";
}

/// A table under its title; nothing when it has no rows.
Text TitledTable(const Text& title, std::initializer_list<const char*> columns, const Text& rows) {
    return rows.empty() ? "" : "<h2>" + title + "</h2>\n" + Table(columns, rows);
}

/// Places where a bar and its parts go.
struct Chart {
    static constexpr double kWidth = 960;
    static constexpr double kHeight = 220;
    static constexpr double kBottom = 195;
    static constexpr double kTop = 15;
    double step;
    std::int64_t highest;

    double HeightOf(std::int64_t count) const {
        return (kBottom - kTop) * static_cast<double>(count) /
               static_cast<double>(std::max<std::int64_t>(highest, 1));
    }
};

Text Attribute(const char* name, double value) {
    char text[64];
    std::snprintf(text, sizeof text, " %s=\"%.1f\"", name, value);
    return text;
}

Text Rectangle(double x, double y, double width, double height, std::size_t kind) {
    return "<rect class=\"k" + std::to_string(kind) + "\"" + Attribute("x", x) + Attribute("y", y) +
           Attribute("width", width) + Attribute("height", height) + "/>";
}

/// "2026-11-21 17: 12 requests: 11 answered, 1 refused".
Text BarTitle(const Text& label, const std::array<std::int64_t, DeliveryReport::kKinds>& counts) {
    Text parts;
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        if (counts[kind] == 0) continue;
        parts += (parts.empty() ? "" : ", ") + std::to_string(counts[kind]) + " " + kKindNames[kind];
    }
    return label + ": " + parts;
}

Text Bar(const Chart& chart, std::size_t position, const Text& label,
         const std::array<std::int64_t, DeliveryReport::kKinds>& counts) {
    const double x = static_cast<double>(position) * chart.step;
    Text bar = "<g><title>" + EscapeXml(BarTitle(label, counts)) + "</title>";
    double y = Chart::kBottom;
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        const double height = chart.HeightOf(counts[kind]);
        y -= height;
        if (counts[kind] != 0) bar += Rectangle(x + 1, y, std::max(chart.step - 2, 1.0), height, kind);
    }
    return bar + "</g>\n";
}

template <class Bars>
Text NumbersOf(const Bars& bars) {
    Text rows;
    for (const auto& [label, counts] : bars) {
        rows += "<tr>" + Head(label);
        for (const std::int64_t count : counts) rows += NumberCell(count);
        rows += "</tr>\n";
    }
    return Table({"When", kKindNames[0], kKindNames[1], kKindNames[2], kKindNames[3], kKindNames[4]}, rows);
}

Text Legend() {
    Text items;
    for (std::size_t kind = 0; kind < DeliveryReport::kKinds; ++kind) {
        items += "<li><svg viewBox=\"0 0 10 10\" aria-hidden=\"true\">" + Rectangle(0, 0, 10, 10, kind) +
                 "</svg>" + kKindNames[kind] + "</li>";
    }
    return "<ul class=\"legend\">" + items + "</ul>\n";
}

Text TimeCells(std::vector<std::int32_t> milliseconds) {
    if (milliseconds.empty()) return "<td></td><td></td><td></td>";
    return NumberCell(PercentileOf(milliseconds, 50)) + NumberCell(PercentileOf(milliseconds, 95)) +
           NumberCell(PercentileOf(milliseconds, 100));
}

/// Every field of the entry, for who wants to know all.
Text WholeEntry(const DeliveryRecord& record) {
    Text fields;
    for (const auto& [key, value] : record.fields.Fields()) {
        fields += "<tr>" + Head(key) + Cell(value) + "</tr>";
    }
    return "<details><summary>whole entry</summary><table>" + fields + "</table></details>";
}

Text ReasonOf(const Logfmt& fields) {
    for (const char* key : {"fault", "error", "first", "reply"}) {
        if (!fields.Value(key).empty()) return fields.Value(key);
    }
    return fields.Value("http").empty() ? "" : "HTTP " + fields.Value("http");
}

Text TroubleRow(const DeliveryRecord& record) {
    const Logfmt& fields = record.fields;
    return "<tr>" + Head(record.time) + Cell(record.Outcome()) + Cell(fields.Value("method")) +
           Cell(fields.Value("to")) + Cell(fields.Value("server")) + Cell(fields.Value("client")) +
           "<td class=\"what\">" + EscapeXml(ReasonOf(fields)) + WholeEntry(record) + "</td></tr>\n";
}

/// Days in place of hours.
template <class Bars>
Bars ByDay(const Bars& hours) {
    constexpr std::size_t kDate = 10;
    Bars days;
    for (const auto& [hour, counts] : hours) {
        auto& day = days[hour.substr(0, kDate)];
        for (std::size_t kind = 0; kind < counts.size(); ++kind) day[kind] += counts[kind];
    }
    return days;
}

}  // namespace

std::string_view ReportStyle();

DeliveryReport::Kind DeliveryReport::KindOf(const DeliveryRecord& record) {
    const Text& outcome = record.Outcome();
    if (outcome == "refused") return Kind::Refused;
    if (outcome == "not-connected") return Kind::NotConnected;
    if (outcome != "answered") return Kind::Unknown;  // one that was cut off, too
    return record.HasFailed() || record.fields.Value("via") == "secondary" ? Kind::Trouble : Kind::Answered;
}

void DeliveryReport::Add(const DeliveryRecord& record) {
    constexpr std::size_t kHour = 13;
    const Kind kind = KindOf(record);
    const auto index = static_cast<std::size_t>(kind);
    ++counts_[index];
    ++hours_[record.time.substr(0, kHour)][index];
    if (kind == Kind::Refused) {
        CountName(refusals_, otherRefusals_, {record.fields.Value("client"), record.fields.Value("fault")});
    } else {
        Server& server = servers_[record.fields.Value("server")];
        ++server.counts[index];
        if (const auto time = record.Number("ms")) {
            server.milliseconds.push_back(
                static_cast<std::int32_t>(std::clamp<std::int64_t>(*time, 0, INT32_MAX)));
        }
    }
    if (const Text& to = record.fields.Value("to"); !to.empty()) CountName(recipients_, otherRecipients_, to);
    if (kind == Kind::Answered) return;
    ++troubleCount_;
    troubles_.push_back(record);
    if (troubles_.size() > kShownTroubles) troubles_.pop_front();
}

std::string DeliveryReport::Tiles() const {
    Text tiles;
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        tiles += "<li><strong>" + std::to_string(counts_[kind]) + "</strong>" + kKindNames[kind] + "</li>";
    }
    return "<ul class=\"tiles\"><li><strong>" + std::to_string(Total(counts_)) + "</strong>requests</li>" +
           tiles + "</ul>\n";
}

std::string DeliveryReport::Bars() const {
    if (hours_.empty()) return "<p>No request in this time.</p>\n";
    const bool byDay = hours_.size() > kMostBars;
    const auto bars = byDay ? ByDay(hours_) : hours_;
    Chart chart{Chart::kWidth / static_cast<double>(std::max<std::size_t>(bars.size(), 12)), 0};
    for (const auto& [label, counts] : bars) chart.highest = std::max(chart.highest, Total(counts));

    Text drawing;
    std::size_t position = 0;
    for (const auto& [label, counts] : bars) drawing += Bar(chart, position++, label, counts);
    const Text unit = byDay ? "day" : "hour";
    return "<h2>Requests each " + unit + "</h2>\n" + Legend() +
           "<svg role=\"img\" viewBox=\"0 0 960 220\"><title>Requests each " + unit + ", from " +
           EscapeXml(bars.begin()->first) + " to " + EscapeXml(bars.rbegin()->first) + ", at most " +
           std::to_string(chart.highest) + "; the table below has the numbers</title>\n" + drawing +
           "<text x=\"0\" y=\"12\">" + std::to_string(chart.highest) + "</text><text x=\"0\" y=\"214\">" +
           EscapeXml(bars.begin()->first) + "</text></svg>\n<details><summary>The numbers</summary>\n" +
           NumbersOf(bars) + "</details>\n";
}

std::string DeliveryReport::Servers() const {
    Text rows;
    for (const auto& [name, server] : servers_) {
        const std::int64_t answered = server.counts[0] + server.counts[1];
        rows += "<tr>" + Head(name.empty() ? "no address" : name) + NumberCell(Total(server.counts)) +
                NumberCell(Total(server.counts) - answered) + TimeCells(server.milliseconds) + "</tr>\n";
    }
    return TitledTable("Paging servers", {"Server", "Requests", "Failures", "p50 ms", "p95 ms", "Longest ms"},
                       rows);
}

std::string DeliveryReport::Recipients() const {
    Text rows;
    for (const auto& [name, count] : Busiest(recipients_)) {
        rows += "<tr>" + Head(name) + NumberCell(count) + "</tr>\n";
    }
    if (otherRecipients_ > 0)
        rows += "<tr>" + Head("names not counted") + NumberCell(otherRecipients_) + "</tr>\n";
    return TitledTable("Busiest recipients and objects", {"Name", "Requests"}, rows);
}

std::string DeliveryReport::Refusals() const {
    Text rows;
    for (const auto& [key, count] : Busiest(refusals_)) {
        rows += "<tr>" + Head(key.first.empty() ? "not told" : key.first) + Cell(key.second) +
                NumberCell(count) + "</tr>\n";
    }
    if (otherRefusals_ > 0)
        rows += "<tr>" + Head("others") + Cell("") + NumberCell(otherRefusals_) + "</tr>\n";
    return TitledTable("Refusals", {"Client", "Reason", "Requests"}, rows);
}

std::string DeliveryReport::Troubles() const {
    Text rows;
    for (auto record = troubles_.rbegin(); record != troubles_.rend(); ++record) rows += TroubleRow(*record);
    Text note;
    if (troubleCount_ > static_cast<std::int64_t>(troubles_.size())) {
        note = "<p>The newest " + std::to_string(troubles_.size()) + " of " + std::to_string(troubleCount_) +
               ".</p>\n";
    }
    return TitledTable("Not simply delivered",
                       {"When", "Outcome", "Method", "To", "Server", "Client", "What"}, rows) +
           note;
}

std::string DeliveryReport::Page(const std::string& title, const std::string& madeAt) const {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
           EscapeXml(title) +
           "</title>\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta "
           "http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; img-src "
           "data:\">\n<link rel=\"icon\" href=\"data:,\">\n<style>" +
           Text(ReportStyle()) + "</style>\n</head>\n<body>\n<header>\n<h1>" + EscapeXml(title) +
           "</h1>\n<p class=\"quiet\">Made " + EscapeXml(madeAt) +
           " from the delivery journal.</p>\n</header>\n<main>\n" + Tiles() + Bars() + Servers() +
           Recipients() + Refusals() + Troubles() + "</main>\n</body>\n</html>\n";
}

}  // namespace quorbel
