#include "util/SpoolDirectories.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "CVException.h"
#include "CVioFile.h"
#include "PathRoutines.h"
#include "util/BoundedText.h"
#include "util/FormatExpansion.h"
#include "util/StringRoutines.h"

using namespace quorbel;

char g_strConfigDir[1024];
DirectoryTable g_tDir;
QueueDirectoryEntry* g_pQueueDirectory;
std::int32_t g_nQueueDirectory;

namespace {

using Slot = DirectorySlot;

struct DirectoryKey {
    std::string_view key;
    Slot slot;
};

// Kept for compatibility: a line belongs to the first key that it begins with, whatever follows.
constexpr DirectoryKey kKeysAsRead[] = {
    {"spool_dir", Slot::Spool},       {"snmp_spool_dir", Slot::SnmpSpool},
    {"cascade_dir", Slot::Cascade},   {"wap_dir", Slot::Wap},
    {"schedule_dir", Slot::Schedule}, {"archive_dir", Slot::Archive},
    {"log_dir", Slot::Log},           {"error_dir", Slot::Error},
    {"filter_dir", Slot::Filter},     {"report_dir", Slot::Report},
    {"stat_dir", Slot::Stat},         {"fax_dir", Slot::Fax},
    {"voice_dir", Slot::Voice},       {"attachment_dir", Slot::Attachment},
    {"waiting_dir", Slot::Waiting},
};

// No spool_dir: the default queue carries that path. wap_dir stands elsewhere than in reading.
constexpr DirectoryKey kKeysAsWritten[] = {
    {"snmp_spool_dir", Slot::SnmpSpool},
    {"cascade_dir", Slot::Cascade},
    {"schedule_dir", Slot::Schedule},
    {"archive_dir", Slot::Archive},
    {"log_dir", Slot::Log},
    {"error_dir", Slot::Error},
    {"filter_dir", Slot::Filter},
    {"report_dir", Slot::Report},
    {"stat_dir", Slot::Stat},
    {"wap_dir", Slot::Wap},
    {"fax_dir", Slot::Fax},
    {"voice_dir", Slot::Voice},
    {"attachment_dir", Slot::Attachment},
    {"waiting_dir", Slot::Waiting},
};
static_assert(std::size(kKeysAsRead) == kDirectorySlots - 1);
static_assert(std::size(kKeysAsWritten) == std::size(kKeysAsRead) - 1);

constexpr std::int32_t kDefaultQueue = 101;
constexpr std::int32_t kDeletedQueue = -1;

/// What g_pQueueDirectory points into. Never destroyed, as the queues live until the process ends.
std::vector<QueueDirectoryEntry>& OwnedQueues() {
    static auto& queues = *new std::vector<QueueDirectoryEntry>;
    return queues;
}

void SetQueues(std::vector<QueueDirectoryEntry> queues) {
    OwnedQueues() = std::move(queues);
    g_pQueueDirectory = OwnedQueues().data();
    g_nQueueDirectory = static_cast<std::int32_t>(OwnedQueues().size());
}

std::span<QueueDirectoryEntry> Queues() {
    return {g_pQueueDirectory, static_cast<std::size_t>(g_nQueueDirectory)};
}

QueueDirectoryEntry MakeQueue(std::int32_t id, std::string_view name, std::string_view path) {
    constexpr std::size_t kLongestPath = 255;
    QueueDirectoryEntry queue = {};
    queue.id = id;
    CopyText(queue.name, name);
    CopyText(queue.path, path.substr(0, kLongestPath));
    return queue;
}

std::string ConfigFile(const char* fileName) {
    char path[sizeof g_strConfigDir + 1024];
    return MakeConfigPath(path, sizeof path, g_strConfigDir, fileName);
}

/// Its value is what follows the last tab.
void StoreDirectory(std::string_view line, Slot slot, DirectoryTable& table) {
    const auto tab = line.rfind('\t');
    if (tab == std::string_view::npos) return;
    auto& field = table[static_cast<std::size_t>(slot)];
    std::string value(line.substr(tab + 1));
    // Kept for compatibility: the value goes through a formatted print, so "%%" stands for "%".
    CopyText(field, ExpandWithoutArguments(TrimSpaces(value.data()), sizeof field - 1));
}

/// "number TAB name TAB path"; nothing for any other line.
std::optional<QueueDirectoryEntry> ParseQueue(char* line) {
    const std::string_view text = TrimSpaces(line);
    const std::int32_t id = LeadingNumber(line);
    const auto first = text.find('\t');
    if (id == 0 || first == std::string_view::npos) return {};
    const auto second = text.find('\t', first + 1);
    if (second == std::string_view::npos) return {};
    return MakeQueue(id, text.substr(first + 1, second - first - 1), text.substr(second + 1));
}

std::vector<QueueDirectoryEntry> ReadDirectoryFile(const std::string& path, DirectoryTable& table) {
    std::vector<QueueDirectoryEntry> queues;
    CVioFile file(path);
    file.Open("r");
    file.Lock('r', true);
    char line[1024];
    while (file.GetLine(line, sizeof line) > 0) {
        const std::string_view text = line;
        const auto key = std::find_if(std::begin(kKeysAsRead), std::end(kKeysAsRead),
                                      [&](const DirectoryKey& known) { return text.starts_with(known.key); });
        if (key != std::end(kKeysAsRead)) {
            StoreDirectory(text, key->slot, table);
        } else if (const auto queue = ParseQueue(line)) {
            queues.push_back(*queue);
        }
    }
    file.Unlock();
    return queues;
}

std::int32_t LowestFreeNumber() {
    const auto isTaken = [](std::int32_t id) {
        return std::any_of(Queues().begin(), Queues().end(),
                           [&](const auto& queue) { return queue.id == id; });
    };
    std::int32_t id = 1;
    while (isTaken(id)) ++id;
    return id;
}

/// Queue 101 is the first one numbered in an empty list: numbers given here start above 100.
void NumberQueues() {
    constexpr std::int64_t kOffset = 100;
    std::int64_t highest = 0;
    for (const auto& queue : Queues()) highest = std::max<std::int64_t>(highest, queue.id);
    for (auto& queue : Queues()) {
        if (queue.id != 0) continue;
        const std::int64_t number = ++highest + kOffset;
        const bool fits = number <= std::numeric_limits<std::int32_t>::max();
        queue.id = fits ? static_cast<std::int32_t>(number) : LowestFreeNumber();
    }
}

std::string CanonicalText(const DirectoryTable& table) {
    std::string text;
    for (const auto& [key, slot] : kKeysAsWritten) {
        const char* value = DirectoryOf(table, slot);
        if (slot == Slot::SnmpSpool && *value == '\0') value = DirectoryOf(table, Slot::Spool);
        text.append(key).append(":\t\t").append(value).append("\n");
    }
    for (const auto& queue : Queues()) {
        if (queue.id == kDeletedQueue) continue;
        text.append(std::to_string(queue.id)).append("\t").append(queue.name).append("\t").append(queue.path);
        text.append("\n");
    }
    return text;
}

}  // namespace

int LoadDirectoryConfig(const char* fileName, DirectoryTable& table) try {
    SetQueues(ReadDirectoryFile(ConfigFile(fileName), table));
    if (g_nQueueDirectory == 0) {
        SetQueues({MakeQueue(kDefaultQueue, "Default", DirectoryOf(table, Slot::Spool))});
        SaveDirectoryConfig(fileName, table);
    }
    std::qsort(g_pQueueDirectory, Queues().size(), sizeof(QueueDirectoryEntry), CompareQueueDirectory);
    return 1;
} catch (const CVioException& failure) {
    throw CVException(failure.GetFile(), failure.GetLine(), failure.GetMessage(), failure.GetSystemMessage());
}

namespace quorbel {

std::size_t ReadDirectories(const std::string& path, DirectoryTable& table) {
    return ReadDirectoryFile(path, table).size();
}

}  // namespace quorbel

int SaveDirectoryConfig(const char* fileName, const DirectoryTable& table) {
    CVioFile file(ConfigFile(fileName));
    file.Open("a");
    file.Lock('w', true);
    if (g_nQueueDirectory == 0) SetQueues({MakeQueue(0, "Default", DirectoryOf(table, Slot::Spool))});
    NumberQueues();
    if (!ReplaceFile(file.GetPath(), CanonicalText(table))) {
        throw CVioException(file.GetPath(), "CVioFile", __LINE__, "File Write Failed", GetSystemErrorText());
    }
    file.Unlock();
    return 1;
}

int CompareQueueDirectory(const void* first, const void* second) {
    if (first == nullptr || second == nullptr) return (first != nullptr) - (second != nullptr);
    return strcasecmp(static_cast<const QueueDirectoryEntry*>(first)->name,
                      static_cast<const QueueDirectoryEntry*>(second)->name);
}
