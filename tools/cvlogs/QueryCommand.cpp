#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <map>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/EntryOutput.h"
#include "tools/operator/CommandLine.h"
#include "tools/operator/Output.h"

namespace quorbel {

namespace {

constexpr auto kPause = std::chrono::milliseconds(20);

/// An entry that outlives its source's next one.
class KeptEntry {
public:
    explicit KeptEntry(const LogEntry& entry)
        : entry_(entry),
          text_(entry.text),
          time_(entry.time),
          module_(entry.module),
          message_(entry.message),
          sourceFile_(entry.sourceFile) {
        entry_.text = text_;
        entry_.time = time_;
        entry_.module = module_;
        entry_.message = message_;
        entry_.sourceFile = sourceFile_;
    }
    KeptEntry(const KeptEntry&) = delete;
    KeptEntry& operator=(const KeptEntry&) = delete;

    const LogEntry& Get() const { return entry_; }

private:
    LogEntry entry_;
    const std::string text_, time_, module_, message_, sourceFile_;
};

EntryPrinter PrinterFor(const QueryChoice& choice) {
    PreparePrinting(choice.print, !choice.follow);
    const EntryFormat format = choice.print.asJson  ? EntryFormat::Json
                               : choice.print.asTsv ? EntryFormat::Tsv
                                                    : EntryFormat::Lines;
    return {format, !choice.log.module.empty()};
}

[[noreturn]] void FailToFind(const EntryChoice& choice) {
    const bool hint =
        !choice.timePattern.empty() && choice.timePattern.find_first_of("%_") == std::string::npos;
    throw std::runtime_error(std::string("no such entries") +
                             (hint ? "; a time pattern stands for the whole text, as in \"02/%\"" : ""));
}

bool IsSorted(const QueryChoice& choice) {
    return choice.newest || choice.byModule || choice.byLevel;
}

void RequireSense(const QueryChoice& choice) {
    if (!choice.follow) return;
    if (IsSorted(choice) || choice.limit != 0 || choice.offset != 0) {
        throw UsageError("--follow has no end to sort or to count from");
    }
}

// As many of the last entries as are wanted; 0 is all of them.
std::deque<KeptEntry> LastEntries(WantedEntries& entries, std::int64_t most) {
    std::deque<KeptEntry> kept;
    LogEntry entry;
    while (entries.Next(entry)) {
        kept.emplace_back(entry);
        if (most > 0 && kept.size() > static_cast<std::size_t>(most)) kept.pop_front();
    }
    return kept;
}

std::vector<const LogEntry*> Sorted(const std::deque<KeptEntry>& kept, const QueryChoice& choice) {
    std::vector<const LogEntry*> sorted;
    sorted.reserve(kept.size());
    for (const auto& entry : kept) sorted.push_back(&entry.Get());
    if (choice.newest) std::reverse(sorted.begin(), sorted.end());
    std::stable_sort(sorted.begin(), sorted.end(), [&](const LogEntry* a, const LogEntry* b) {
        if (choice.byModule) return a->module < b->module;
        return choice.byLevel && a->level < b->level;
    });
    return sorted;
}

bool PrintSorted(WantedEntries& entries, const QueryChoice& choice, EntryPrinter& printer) {
    const bool endIsEnough = choice.newest && choice.limit > 0;
    const std::int64_t most = choice.last > 0 ? choice.last : endIsEnough ? choice.offset + choice.limit : 0;
    const auto kept = LastEntries(entries, most);
    std::int64_t number = 0;
    for (const LogEntry* entry : Sorted(kept, choice)) {
        ++number;
        if (number <= choice.offset) continue;
        if (choice.limit > 0 && number > choice.offset + choice.limit) break;
        printer.Print(*entry);
    }
    return number > choice.offset;
}

bool PrintInOrder(WantedEntries& entries, const QueryChoice& choice, EntryPrinter& printer) {
    std::int64_t number = 0;
    LogEntry entry;
    while ((choice.limit == 0 || number < choice.offset + choice.limit) && entries.Next(entry)) {
        if (++number > choice.offset) printer.Print(entry);
    }
    return number > choice.offset;
}

[[noreturn]] void Follow(WantedEntries& entries, EntryPrinter& printer) {
    while (true) {
        LogEntry entry;
        while (entries.Next(entry)) printer.Print(entry);
        FlushOutput();
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace

void PreparePrinting(const PrintChoice& choice, bool pager) {
    const bool onTerminal = PrintsToTerminal() && std::getenv("NO_COLOR") == nullptr;
    if (choice.colour == "always" || (choice.colour == "auto" && onTerminal)) UseColours();
    if (pager && !choice.noPager) UsePager();
}

void QueryEntries(const QueryChoice& choice) {
    RequireSense(choice);
    WantedEntries entries(choice);
    EntryPrinter printer = PrinterFor(choice);
    const bool needsAll = IsSorted(choice) || choice.last > 0;
    const bool found =
        needsAll ? PrintSorted(entries, choice, printer) : PrintInOrder(entries, choice, printer);
    if (choice.follow) Follow(entries, printer);
    if (!found) FailToFind(choice);
}

void CountEntries(const QueryChoice& choice) {
    using Alike = std::tuple<std::int64_t, std::string, int>;
    EntryChoice wanted = choice;
    wanted.exactLevel = true;
    WantedEntries entries(wanted);
    std::map<Alike, std::pair<std::string, std::int64_t>> counts;  // with the time as text
    LogEntry entry;
    while (entries.Next(entry)) {
        auto& [time, count] = counts[{entry.timestamp, std::string(entry.message), entry.level}];
        time = entry.time;
        ++count;
    }
    if (counts.empty()) FailToFind(choice);
    EntryPrinter printer = PrinterFor(choice);
    for (const auto& [alike, found] : counts) {
        const auto& [timestamp, message, level] = alike;
        printer.PrintCount({.time = found.first, .message = message, .level = level}, found.second);
    }
}

}  // namespace quorbel
