#include "syslib/IniReaderWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>
#include <utility>

#include "CVException.h"
#include "CVioFile.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

using Kind = IniLine::Kind;

/// What a line holds at most, its line feed included, in reading and in writing.

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

void SleepThisThread(std::chrono::milliseconds wait) {
    std::this_thread::sleep_for(wait);
}

/// The line as it stands in the file, cut without notice: a cut line runs on into the next one.
std::string Written(const IniLine& line) {
    std::string text = line.kind == Kind::Header ? "\n" + line.text : line.text;
    if (line.kind == Kind::Entry) text += "=" + line.value;
    text += "\n";
    return text.substr(0, IniReaderWriter::kLongestLine);
}

std::string ReadAll(CVioFile& file) {
    std::string text;
    char part[4096];
    file.Rewind();
    while (const std::size_t length = file.Read(part, sizeof part)) text.append(part, length);
    return text;
}

void Put(CVioFile& file, const std::string& text) {
    file.Rewind();
    file.Write(text);
    file.Truncate(static_cast<off_t>(text.size()));
}

/// The old text keeps its place on the disk until the new one is there, so that a full disk costs nothing.
void Overwrite(CVioFile& file, const std::string& text) {
    const std::string before = ReadAll(file);
    try {
        Put(file, text);
    } catch (const CVioException&) {
        const int code = errno;
        Put(file, before);
        errno = code;
        throw;
    }
}

/// The record of a trimmed line; false when the line is not kept.
bool Parse(std::string text, IniLine& line) {
    if (text.empty()) return false;
    const auto equals = text.find('=');
    if (text.front() == '#' || text.front() == '[' || equals == std::string::npos) {
        line.kind = text.front() == '#' ? Kind::Comment : text.front() == '[' ? Kind::Header : Kind::Plain;
        line.text = std::move(text);
        return true;
    }
    line = {Kind::Entry, text.substr(0, equals), TrimChars(text.substr(equals + 1), kWhiteSpace)};
    return !line.text.empty() && !line.value.empty();
}

}  // namespace

IniReaderWriter::IniReaderWriter(std::string path, bool lock, bool retry)
    : path_(std::move(path)), lock_(lock), retry_(retry), sleep_(SleepThisThread) {}

bool IniReaderWriter::load() {
    CVioFile file(path_);
    return LoadFrom(file, "r");
}

bool IniReaderWriter::save(const std::string& otherPath) {
    CVioFile file(otherPath.empty() ? path_ : otherPath);
    // With a lock the file keeps its content until the lock is granted; "w" would empty it before.
    return SaveTo(file, lock_ ? "a" : "w");
}

IniReaderWriter::Section IniReaderWriter::section(std::string_view name) {
    const Section found = FindSection(name);
    if (found != NoSection()) return found;
    return lines_.insert(lines_.end(), {Kind::Header, std::string(name), {}});
}

std::string& IniReaderWriter::key(Section section, std::string_view key) {
    if (std::string* const found = FindKey(section, key)) return *found;
    return lines_.insert(EndOf(section), {Kind::Entry, std::string(key), {}})->value;
}

IniReaderWriter::Section IniReaderWriter::FindSection(std::string_view name) {
    return std::find_if(lines_.begin(), lines_.end(), [&](const IniLine& line) {
        return line.kind == Kind::Header && EqualNoCase(line.text, name);
    });
}

std::string* IniReaderWriter::FindKey(Section section, std::string_view key) {
    if (section == NoSection()) return nullptr;
    const Section end = EndOf(section);
    const Section found = std::find_if(std::next(section), end, [&](const IniLine& line) {
        return line.kind == Kind::Entry && EqualNoCase(line.text, key);
    });
    return found == end ? nullptr : &found->value;
}

std::vector<IniReaderWriter::Section> IniReaderWriter::Sections() {
    std::vector<Section> sections;
    for (Section line = lines_.begin(); line != lines_.end(); ++line) {
        if (line->kind == Kind::Header) sections.push_back(line);
    }
    return sections;
}

std::vector<const IniLine*> IniReaderWriter::Entries(Section section) {
    std::vector<const IniLine*> entries;
    if (section == NoSection()) return entries;
    const Section end = EndOf(section);
    for (Section line = std::next(section); line != end; ++line) {
        if (line->kind == Kind::Entry) entries.push_back(&*line);
    }
    return entries;
}

void IniReaderWriter::SetSleep(std::function<void(std::chrono::milliseconds)> sleep) {
    sleep_ = std::move(sleep);
}

bool IniReaderWriter::Try(const std::function<void()>& step) {
    try {
        step();
        return true;
    } catch (const CVioException&) {
        lastError_ = errno;
        return false;
    }
}

bool IniReaderWriter::LoadFrom(CVioFile& file, const char* mode) {
    lines_.clear();
    loaded_ = Try([&] {
        if (mode != nullptr) file.Open(mode);
        TakeLock(file, 'r');
        ReadLines(file);
    });
    if (!loaded_) lines_.clear();
    if (lock_) file.Unlock();
    return loaded_;
}

bool IniReaderWriter::SaveTo(CVioFile& file, const char* mode) {
    const bool saved = Try([&] {
        if (mode != nullptr) file.Open(mode);
        TakeLock(file, 'w');
        std::string text;
        for (const IniLine& line : lines_) text += Written(line);
        if (mode == nullptr) return Overwrite(file, text);
        file.Truncate(0);
        file.Write(text);
    });
    if (lock_) file.Unlock();
    return saved;
}

void IniReaderWriter::TakeLock(CVioFile& file, char kind) {
    if (!lock_) return file.Rewind();
    const int tries = retry_ ? 10 : 1;
    for (int count = 1;; ++count) {
        try {
            return file.Lock(kind, false);
        } catch (const CVioException&) {
            lastError_ = errno;
            file.Unlock();
            if (count == tries || !LockIsBusy()) throw;
        }
        sleep_(std::chrono::milliseconds(std::rand()));  // all of it: no bound is wanted here
    }
}

void IniReaderWriter::ReadLines(CVioFile& file) {
    char buffer[kLongestLine + 1];
    while (file.GetLine(buffer, sizeof buffer) > 0) {
        IniLine line;
        if (Parse(TrimChars(buffer, kWhiteSpace), line)) lines_.push_back(std::move(line));
    }
}

IniReaderWriter::Section IniReaderWriter::EndOf(Section section) {
    return std::find_if(std::next(section), lines_.end(),
                        [](const IniLine& line) { return line.kind == Kind::Header; });
}
