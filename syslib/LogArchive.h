#pragma once

#include <cstdint>
#include <string>

namespace quorbel {

/// When a log file is archived, and how many archives are kept. A negative size archives before every entry;
/// with a negative number only archive 1 is kept.
struct ArchiveRule {
    std::int32_t bytesPerFile = 204800;
    std::int32_t files = 20;
};

/// Turns a log file that has reached its size into archive 1 ("<path>.1"), the archives there into the next
/// ones, and drops the last. The file's last line then tells when it was archived; the next entry starts a
/// new file.
///
/// Call it with the log file's lock held. A failure goes to the system log under `identity` and leaves the
/// file to grow on; nothing is thrown.
void ArchiveWhenFull(const std::string& path, ArchiveRule rule, const std::string& identity);

}  // namespace quorbel
