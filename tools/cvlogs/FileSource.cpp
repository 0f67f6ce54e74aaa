#include "tools/cvlogs/FileSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tools/operator/ProgressLine.h"

namespace quorbel {

namespace {

constexpr std::size_t kBlock = 1 << 20;
constexpr std::int64_t kMegabyte = 1000000;
// No program writes so long an entry: what has no beginning for so long is no log.
constexpr std::size_t kLongestEntry = 16 * kBlock;

// Where the last entry of the text begins; 0 when only its first character may be a beginning.
std::size_t LastBeginning(std::string_view text) {
    for (std::size_t lineEnd = text.rfind('\n'); lineEnd != text.npos && lineEnd > 0;
         lineEnd = text.rfind('\n', lineEnd - 1)) {
        if (BeginsLogEntry(text.substr(lineEnd + 1))) return lineEnd + 1;
    }
    return 0;
}

std::string_view WithoutLineEnds(std::string_view text) {
    return text.substr(0, text.find_last_not_of("\r\n") + 1);
}

// The last line of an archive is no entry.
bool ClosesArchive(const LogEntry& entry) {
    return entry.level == 0 && entry.message.starts_with("Archiving ");
}

}  // namespace

FileSource::FileSource(std::string path, const Pattern* search, bool follow)
    : path_(std::move(path)), search_(search), follow_(follow), buffer_(2 * kBlock) {
    for (auto& file : OpenLogFiles(path_)) {
        bytesInAll_ += file->Size();
        files_.push_back(std::move(file));
    }
}

bool FileSource::Next(LogEntry& entry) {
    while (true) {
        if (begin_ < complete_) {
            if (TakeEntry(entry)) return true;
        } else if (!Fill() && !TakeRest() && !NextFile()) {
            caughtUp_ = true;
            return false;
        }
    }
}

std::string_view FileSource::Text(std::size_t from, std::size_t to) const {
    return {buffer_.data() + from, to - from};
}

bool FileSource::TakeEntry(LogEntry& entry) {
    if (search_ != nullptr && !SkipToMatch()) return false;
    const std::size_t end = EntryEnd(begin_);
    entry = ParseLogEntry(WithoutLineEnds(Text(begin_, end)));
    if (!entry.time.empty()) entry.timestamp = clock_.Tell(entry.time);
    begin_ = end;
    return !entry.text.empty() && !ClosesArchive(entry);
}

bool FileSource::SkipToMatch() {
    const std::string_view text = Text(begin_, complete_);
    const std::size_t found = search_->Find(text);
    if (found == Pattern::kNone) {
        PassOver(complete_);
        return false;
    }
    const std::size_t match =
        begin_ + LastBeginning(text.substr(0, std::min(text.size(), text.find('\n', found))));
    if (IsRepeatedHour(Text(match, complete_))) PassOver(match);
    begin_ = match;
    return true;
}

bool FileSource::IsRepeatedHour(std::string_view text) {
    return BeginsLogEntry(text) && clock_.IsRepeated(text);
}

// Tells the clock of what is left out: the last entry is enough, unless the order of all tells the hour.
void FileSource::PassOver(std::size_t end) {
    const std::size_t last = begin_ + LastBeginning(Text(begin_, end));
    if (!IsRepeatedHour(Text(last, end))) begin_ = last;
    for (; begin_ < end; begin_ = EntryEnd(begin_)) {
        if (const auto text = Text(begin_, end); BeginsLogEntry(text)) clock_.Tell(text);
    }
}

std::size_t FileSource::EntryEnd(std::size_t start) const {
    while (true) {
        const void* lineEnd = std::memchr(buffer_.data() + start, '\n', complete_ - start);
        if (lineEnd == nullptr) return complete_;
        start = static_cast<std::size_t>(static_cast<const char*>(lineEnd) - buffer_.data()) + 1;
        if (start == complete_ || BeginsLogEntry(Text(start, complete_))) return start;
    }
}

bool FileSource::Fill() {
    if (files_.empty()) return false;
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = complete_ = 0;
    if (buffer_.size() - end_ < kBlock) buffer_.resize(end_ + 2 * kBlock);
    const std::size_t got = files_.front()->Read(buffer_.data() + end_, kBlock);
    if (got == 0) return false;
    end_ += got;
    if (!follow_)
        ShowProgress((bytesDone_ + files_.front()->BytesRead()) / kMegabyte, bytesInAll_ / kMegabyte, "MB");
    waited_ = false;
    complete_ = LastBeginning(Text(0, end_));
    if (complete_ == 0 && end_ >= kLongestEntry) complete_ = end_;
    return true;
}

// What is left at the end of a file is an entry, unless its writer is still at it.
bool FileSource::TakeRest() {
    if (begin_ == end_) return false;
    const bool isWhole = !follow_ || !caughtUp_ || files_.size() > 1 || waited_;
    waited_ = !isWhole;
    if (isWhole) complete_ = end_;
    return isWhole;
}

bool FileSource::NextFile() {
    if (begin_ != end_) return false;
    // New files show that this one has its end, which may lie behind the one that was read.
    if (files_.size() < 2) return follow_ && FindNewFiles();
    bytesDone_ += files_.front()->Size();
    files_.pop_front();
    return true;
}

// True when there is something to be read that was not there before.
bool FileSource::FindNewFiles() {
    LogFile& current = *files_.front();
    if (current.RestartIfShorter()) return true;
    const auto newest = LogFile::Open(path_);
    if (!newest || newest->IsSameAs(current)) return false;
    // Nobody writes to a file that has been renamed, so its end is the end now.
    auto files = OpenLogFiles(path_);
    auto next =
        std::find_if(files.begin(), files.end(), [&](const auto& file) { return file->IsSameAs(current); });
    if (next != files.end()) {
        ++next;
    } else {  // deleted as the oldest one, or compressed
        next = std::find_if(files.begin(), files.end(),
                            [&](const auto& file) { return file->LastWritten() > current.LastWritten(); });
    }
    for (; next != files.end(); ++next) files_.push_back(std::move(*next));
    return true;
}

}  // namespace quorbel
