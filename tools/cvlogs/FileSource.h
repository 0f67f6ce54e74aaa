#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cvlogs/EntryClock.h"
#include "tools/cvlogs/LogEntry.h"
#include "tools/cvlogs/LogFile.h"
#include "tools/cvlogs/Pattern.h"

namespace quorbel {

/// Reads a log file with its archives, and goes on with what is written later, over any number of rotations.
class FileSource : public LogSource {
public:
    /// Throws std::runtime_error when there is no such log. A `search` lets the source leave out entries in
    /// which it finds nothing; it must be local, and outlive the source. `follow` tells that the end is not
    /// the end: the last entry then waits for one more call, in case not all of it has arrived.
    FileSource(std::string path, const Pattern* search, bool follow);

    bool Next(LogEntry& entry) override;

private:
    bool TakeEntry(LogEntry& entry);
    bool SkipToMatch();
    void PassOver(std::size_t end);
    bool IsRepeatedHour(std::string_view text);
    bool Fill();
    bool TakeRest();
    bool NextFile();
    bool FindNewFiles();
    std::size_t EntryEnd(std::size_t start) const;
    std::string_view Text(std::size_t from, std::size_t to) const;

    const std::string path_;
    const Pattern* const search_;
    const bool follow_;
    EntryClock clock_;
    std::deque<std::unique_ptr<LogFile>> files_;  // the first is being read
    std::int64_t bytesDone_ = 0;                  // of the files before
    std::int64_t bytesInAll_ = 0;
    // begin_ to complete_: whole entries; from there to end_: what may go on.
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t complete_ = 0;
    std::size_t end_ = 0;
    bool waited_ = false;    // since the last bytes came
    bool caughtUp_ = false;  // the end was reached once
};

}  // namespace quorbel
