#pragma once

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <vector>

class CVioFile;

namespace quorbel {

/// One line of an INI file. A header's text includes its brackets; only an entry has a value.
struct IniLine {
    enum class Kind : unsigned char { Plain, Header, Comment, Entry };

    Kind kind = Kind::Plain;
    std::string text;
    std::string value;
};

}  // namespace quorbel

/// An INI file as the list of its lines, in file order and with its comments, to be looked up, changed and
/// written back.
///
/// Only "#" starts a comment. Loading drops entries without a key or a value, joins nothing and splits lines
/// over 511 bytes; saving cuts them there, and writes one empty line before each header. Blanks before "="
/// are part of the key: "level = info" is no entry of "level". Names are compared without regard to case.
///
/// Failures are told by a false result; nothing is thrown or logged. One thread at a time.
class IniReaderWriter {
public:
    /// Names a header in the list; valid until the next load, whatever is inserted.
    using Section = std::list<quorbel::IniLine>::iterator;

    /// In bytes, with the line end: what survives being read and written back.
    static constexpr std::size_t kLongestLine = 511;

    /// With `lock`, the file is locked while it is read or written, for the other processes. With `retry`, a
    /// lock that another program holds is asked for ten times, rand() milliseconds apart, which can be weeks.
    explicit IniReaderWriter(std::string path, bool lock = false, bool retry = false);

    IniReaderWriter(const IniReaderWriter&) = delete;
    IniReaderWriter& operator=(const IniReaderWriter&) = delete;

    /// Replaces the list; a failure leaves it empty.
    virtual bool load();
    /// Writes to the file, or to `otherPath` unless that is empty. With the lock, a file whose lock is
    /// refused keeps its content.
    virtual bool save(const std::string& otherPath = {});
    virtual ~IniReaderWriter() = default;

    /// True after a successful load.
    bool IsLoaded() const { return loaded_; }
    /// The `errno` of the load or save that failed last: ENOENT when there is no such file, EAGAIN when
    /// another process held the lock.
    int LastError() const { return lastError_; }
    /// Whether that was another program's lock, so that another try may succeed.
    bool LockIsBusy() const { return lastError_ == EAGAIN || lastError_ == EACCES; }

    /// Finds the header `name`, brackets included, or appends it to the file.
    Section section(std::string_view name);
    /// Finds the value of a key, or adds the key with an empty value after the section's last line. `section`
    /// must not be NoSection(). The reference stays valid until the next load.
    std::string& key(Section section, std::string_view key);

    // The same without creating anything: NoSection() or null when there is none. NoSection() has no keys.
    Section FindSection(std::string_view name);
    std::string* FindKey(Section section, std::string_view key);
    Section NoSection() { return lines_.end(); }

    /// All headers, and all entries of one section, in file order.
    std::vector<Section> Sections();
    std::vector<const quorbel::IniLine*> Entries(Section section);

    /// Replaces the wait between two tries for a refused lock.
    void SetSleep(std::function<void(std::chrono::milliseconds)> sleep);

protected:
    const std::string& Path() const { return path_; }
    /// False, and LastError set, when the step throws CVioException.
    bool Try(const std::function<void()>& step);
    // They open the file with `mode`; null: it is open already.
    bool LoadFrom(CVioFile& file, const char* mode);
    bool SaveTo(CVioFile& file, const char* mode);

private:
    void TakeLock(CVioFile& file, char kind);
    void ReadLines(CVioFile& file);
    /// The line after the section's last one.
    Section EndOf(Section section);

    std::string path_;
    bool lock_;
    bool retry_;
    bool loaded_ = false;
    int lastError_ = 0;
    std::list<quorbel::IniLine> lines_;
    std::function<void(std::chrono::milliseconds)> sleep_;
};
