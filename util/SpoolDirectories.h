#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorbel {

/// The positions of the site's directories in the directory table; other programs index it by these numbers.
/// Position 7 is not used.
enum class DirectorySlot : std::size_t {
    Spool = 0,
    Cascade = 1,
    Schedule = 2,
    Archive = 3,
    Log = 4,
    Error = 5,
    Report = 6,
    Stat = 8,
    Fax = 9,
    Voice = 10,
    Wap = 11,
    SnmpSpool = 12,
    Filter = 13,
    Attachment = 14,
    Waiting = 15,
};

inline constexpr std::size_t kDirectorySlots = 16;
inline constexpr std::size_t kDirectorySlotSize = 256;

/// One zero-terminated path per slot, empty when the site names none.
using DirectoryTable = char[kDirectorySlots][kDirectorySlotSize];

}  // namespace quorbel

/// One message queue of the server. Number 0 stands for "not numbered yet", -1 for "deleted".
struct QueueDirectoryEntry {
    std::int32_t id;
    char name[51];
    char path[257];
};
static_assert(sizeof(QueueDirectoryEntry) == 312);

/// The configuration directory; the program's entry sets it before anything reads the configuration.
extern char g_strConfigDir[1024];

/// The site's directories and queues; LoadDirectoryConfig fills them. The queues live until the process ends.
extern quorbel::DirectoryTable g_tDir;
extern QueueDirectoryEntry* g_pQueueDirectory;
extern std::int32_t g_nQueueDirectory;

namespace quorbel {

/// The text of one slot.
inline const char* DirectoryOf(const DirectoryTable& table, DirectorySlot slot) {
    return table[static_cast<std::size_t>(slot)];
}

}  // namespace quorbel

/// Reads `fileName` in g_strConfigDir into `table` and the queue list, sorted by name; returns 1.
///
/// A file that names no queue is rewritten with queue 101 "Default" on the spool directory; that form has no
/// spool_dir line, so afterwards the spool directory is known by the queue only. Values a line does not name
/// stay as they are in `table`; the queue list is replaced. Throws CVException with the text of the failed
/// file operation; the file is unlocked and closed on every path.
int LoadDirectoryConfig(const char* fileName, quorbel::DirectoryTable& table);

namespace quorbel {

/// Reads the file at `path` into `table` alone: keeps no queue and rewrites nothing. Gives how many queues it names; the
/// programs complete a file that names none. Throws CVioException.
std::size_t ReadDirectories(const std::string& path, DirectoryTable& table);

}  // namespace quorbel

/// Writes table and queue list to `fileName` in g_strConfigDir in canonical form; returns 1. Numbers the
/// queues that have none, adds the default queue when there is none at all. Throws CVioException.
int SaveDirectoryConfig(const char* fileName, const quorbel::DirectoryTable& table);

/// qsort's comparison of two entries: by name only, regardless of case; null first.
int CompareQueueDirectory(const void* first, const void* second);
