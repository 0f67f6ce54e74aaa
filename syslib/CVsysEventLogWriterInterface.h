#pragma once

#include <ctime>
#include <string>

#include "syslib/LogFile.h"

namespace quorbel {

/// What a writer does with the entries that it is given.
struct WriterDescription {
    enum class Kind { Other, File, Database, ErrorStream };

    Kind kind = Kind::Other;
    std::string path{};           ///< of the file or database; the refused one when there is no other
    ArchiveRule archive{};        ///< a file's
    bool perProcessFile = false;  ///< entries go to a file of the module's name beside `path`
    std::string notReady{};       ///< why no entry is written; empty when they are
};

/// Whether a writer acts on its configuration, or only looks what it would come to: it then creates and
/// deletes nothing, opens nothing for writing, tells the system log nothing and refuses every entry.
enum class WriterMode { Write, Look };

}  // namespace quorbel

/// Where the entries of a module end up: a file, a database, the error stream.
///
/// A writer is built empty, then given the module's configuration key by key; keys compare without case. It
/// guards nothing itself: SharedWriter lets one thread at a time in. Its operations throw nothing; they tell
/// the system log.
class CVsysEventLogWriterInterface {
public:
    // The order of the virtual operations is fixed: destructors, setProperty, DoWork, isReady.
    virtual ~CVsysEventLogWriterInterface() = default;

    /// False when the value is refused; the old setting then stays. True for a key that means nothing here.
    virtual bool setProperty(const std::string& key, const std::string& value) = 0;

    /// Writes one entry: 1 when it is written, 0 when the writer is not ready or failed.
    /// `level` is a LogLevel's number, or one outside its range; `extra` is -1 and `userText` null when
    /// the caller gave none; `time` is in seconds, 0 means now.
    virtual int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
                       const char* userText, std::time_t time) = 0;

    /// True once the configuration allows entries to be written.
    virtual bool isReady() = 0;

    /// What the configuration given so far comes to.
    virtual quorbel::WriterDescription Describe() const { return {}; }
};
