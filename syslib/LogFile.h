#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// When a log file is archived, and how many archives are kept. A negative size archives before every entry;
/// with a negative number only archive 1 is kept.
struct ArchiveRule {
    std::int32_t bytesPerFile = 204800;
    std::int32_t files = 20;
};

/// What an entry does that finds the file not ending in a line feed, as a program that was killed in the
/// middle of its entry leaves it.
enum class TornLine { Continue, StartNewLine };

/// How a writer's last entry left its file. While the file is as long as that, its end need not be looked at.
struct LogFileEnd {
    TornLine tornLine = TornLine::Continue;
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;  // 0: unknown, or to be looked at
};

/// Appends one entry to the log file at `path`, creating it, and archives it first when it has reached its
/// size: it becomes archive 1 ("<path>.1"), the archives there become the next ones, the last is dropped.
/// The archived file's last line tells when that was.
///
/// The entry is appended as a whole or not at all: what a full disk cuts off is taken back. Call it with the
/// log file's lock held, and with the same `end` again and again. Throws CVioException "File Open Failed" and "File Write Failed"; a failure to archive
/// goes to the system log under `identity` and leaves the file to grow on.
void AppendToLogFile(const std::string& path, std::string_view entry, LogFileEnd& end, ArchiveRule rule,
                     const std::string& identity);

}  // namespace quorbel
