#include <algorithm>
#include <cstring>
#include <ctime>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "CVException.h"
#include "PathRoutines.h"
#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/Deliveries.h"
#include "tools/cvlogs/DeliveryReport.h"
#include "tools/cvlogs/EntryOutput.h"
#include "tools/operator/Output.h"
#include "tools/operator/Text.h"

namespace quorbel {

namespace {

using Cells = std::vector<std::string>;

/// A column of the table; a number has its blanks before it.
struct Column {
    const char* title;
    std::size_t width;
    bool isNumber = false;
};
constexpr Column kColumns[] = {{"TIME", 19},    {"OUTCOME", 13}, {"HTTP", 4, true},
                               {"MS", 6, true}, {"METHOD", 20},  {"TO", 14},
                               {"SERVER", 24},  {"CLIENT", 15},  {"WHAT", 0}};
constexpr Column kSummaryColumns[] = {{"COUNT", 7, true}, {"P50", 6, true}, {"P95", 6, true},
                                      {"MAX", 6, true},   {"OUTCOME", 13},  {"METHOD", 20},
                                      {"SERVER", 0}};
constexpr const char* kNumbers[] = {"http", "ms", "bytes"};

template <class Columns>
std::string TableLine(const Columns& columns, const Cells& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string cell = Visible(cells[i]);  // one line, whatever was sent
        const std::size_t width = columns[i].width;
        const std::string blanks(cell.size() < width ? width - cell.size() : 0, ' ');
        line += (i == 0 ? "" : "  ") + (columns[i].isNumber ? blanks + cell : cell + blanks);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

template <class Columns>
void PrintTitles(const Columns& columns) {
    Cells titles;
    for (const Column& column : columns) titles.emplace_back(column.title);
    PrintLine(TableLine(columns, titles), "1");
}

/// The texts of numbered faults.
class Catalogue {
public:
    explicit Catalogue(const std::string& configDirectory)
        : isThere_(!configDirectory.empty() &&
                   IsReadableDatabase(CVMessageManager::GetDBFilePath(configDirectory))) {}

    /// "2004 Missing URL", and behind it what the catalogue has for 2004.
    std::string WithText(const std::string& fault) const {
        const int number = std::atoi(fault.c_str());
        const std::string text = isThere_ && number > 0 ? CVMessageManager::GetMessage(number) : "";
        return text.empty() ? fault : fault + " (" + text + ")";
    }

private:
    const bool isThere_;
};

std::string WhatHappened(const DeliveryRecord& record, const Catalogue& catalogue) {
    const Logfmt& fields = record.fields;
    std::string what;
    const auto add = [&](const char* label, const std::string& text) {
        if (!text.empty()) what += (what.empty() ? "" : "; ") + (label + text);
    };
    if (fields.Value("via") == "secondary") add("", "by the second server");
    add("first: ", fields.Value("first"));
    add("", fields.Value("error"));
    add("", catalogue.WithText(fields.Value("fault")));
    add("cut: ", fields.Value("cut"));
    add("", fields.Value("reply"));
    return what;
}

std::string NumberText(std::optional<std::int64_t> number) {
    return number ? std::to_string(*number) : "";
}

Cells RowOf(const DeliveryRecord& record, const Catalogue& catalogue) {
    const Logfmt& fields = record.fields;
    return {record.time,
            record.Outcome(),
            fields.Value("http"),
            fields.Value("ms"),
            fields.Value("method"),
            fields.Value("to"),
            fields.Value("server"),
            fields.Value("client"),
            WhatHappened(record, catalogue)};
}

std::string JsonOf(const DeliveryRecord& record) {
    std::string object;
    for (const auto& [key, value] : record.fields.Fields()) {
        const bool isNumber =
            std::find(std::begin(kNumbers), std::end(kNumbers), key) != std::end(kNumbers) &&
            record.Number(key);
        object += (object.empty() ? "{" : ",") + JsonString(key) + ":";
        object += isNumber ? value : JsonString(value);
    }
    return object + "}";
}

template <class Columns>
void PrintTsvTitles(const Columns& columns) {
    Cells titles;
    for (const Column& column : columns) titles.emplace_back(column.title);
    PrintFields(titles);
}

void PrintTsv(const Cells& cells) {
    Cells fields;
    for (const auto& cell : cells) fields.push_back(TsvField(cell));
    PrintFields(fields);
}

// Lines, or fields between tabs, with the titles before the first.
template <class Columns>
class PrintedTable {
public:
    PrintedTable(const Columns& columns, bool asTsv) : columns_(columns), asTsv_(asTsv) {}

    void Print(const Cells& cells, const char* colour = "") {
        if (!headed_) asTsv_ ? PrintTsvTitles(columns_) : PrintTitles(columns_);
        headed_ = true;
        asTsv_ ? PrintTsv(cells) : PrintLine(TableLine(columns_, cells), colour);
    }

private:
    const Columns& columns_;
    const bool asTsv_;
    bool headed_ = false;
};

bool PrintSummary(const DeliveryChoice& choice, const PrintChoice& print) {
    PrintedTable table(kSummaryColumns, print.asTsv);
    const DeliverySummary summary = Summarize(choice);
    for (const auto& [key, group] : summary) {
        const Cells times = {NumberText(group.Percentile(50)), NumberText(group.Percentile(95)),
                             NumberText(group.Percentile(100))};
        if (!print.asJson) {
            table.Print({std::to_string(group.count), times[0], times[1], times[2], key[1], key[2], key[0]});
            continue;
        }
        const auto number = [](const std::string& text) { return text.empty() ? "null" : text; };
        PrintLine("{\"server\":" + JsonString(key[0]) + ",\"outcome\":" + JsonString(key[1]) +
                  ",\"method\":" + JsonString(key[2]) + ",\"count\":" + std::to_string(group.count) +
                  ",\"p50\":" + number(times[0]) + ",\"p95\":" + number(times[1]) +
                  ",\"max\":" + number(times[2]) + "}");
    }
    return !summary.empty();
}

bool PrintTable(const DeliveryChoice& choice, const PrintChoice& print) {
    const Catalogue catalogue(choice.entries.log.configDirectory);
    PrintedTable table(kColumns, print.asTsv);
    bool found = false;
    ForEachDelivery(choice, [&](const DeliveryRecord& record) {
        found = true;
        if (print.asJson) return PrintLine(JsonOf(record));
        table.Print(RowOf(record, catalogue), ColourOfLevel(record.level));
    });
    return found;
}

std::string LocalTime(std::time_t moment) {
    std::tm local{};
    localtime_r(&moment, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local)};
}

std::string ReportTitle(const EntryChoice& entries) {
    std::string title = "Deliveries";
    if (entries.since) title += " from " + LocalTime(*entries.since);
    if (entries.until) title += " until " + LocalTime(*entries.until);
    return title;
}

void WriteReport(const DeliveriesChoice& choice) {
    DeliveryReport report;
    ForEachDelivery(choice.wanted, [&](const DeliveryRecord& record) { report.Add(record); });
    const std::string page = report.Page(ReportTitle(choice.wanted.entries), LocalTime(std::time(nullptr)));
    if (!ReplaceFile(choice.html, page)) {
        throw std::runtime_error("cannot write " + choice.html + ": " + GetSystemErrorText());
    }
}

}  // namespace

void ShowDeliveries(const DeliveriesChoice& choice) {
    if (!choice.html.empty()) return WriteReport(choice);
    PreparePrinting(choice.print, /*pager=*/true);
    const bool found =
        choice.summary ? PrintSummary(choice.wanted, choice.print) : PrintTable(choice.wanted, choice.print);
    if (!found) throw std::runtime_error("no such deliveries");
}

}  // namespace quorbel
