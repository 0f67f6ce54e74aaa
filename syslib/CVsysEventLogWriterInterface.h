#pragma once

#include <ctime>
#include <string>

/// Where the entries of a module end up: a file, a database, the error stream.
///
/// A writer is built empty, then given the module's configuration key by key; keys compare without case. It
/// guards nothing itself: GuardedWriter lets one thread at a time in. Its operations throw nothing; they tell
/// the system log.
class CVsysEventLogWriterInterface {
public:
    // The order of the virtual operations is fixed: destructors, setProperty, DoWork, isReady.
    virtual ~CVsysEventLogWriterInterface() = default;

    /// False when the value is refused; the old setting then stays. True for a key that means nothing here.
    virtual bool setProperty(const std::string& key, const std::string& value) = 0;

    /// Writes one entry: 1 when it is written, 0 when the writer is not ready or failed.
    /// `level` is an EventLevel's number, or one outside its range; `extra` is -1 and `userText` null when
    /// the caller gave none; `time` is in seconds, 0 means now.
    virtual int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
                       const char* userText, std::time_t time) = 0;

    /// True once the configuration allows entries to be written.
    virtual bool isReady() = 0;
};
