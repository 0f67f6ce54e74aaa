#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "syslib/CVLogInterface.h"
#include "syslib/CVsysEventLogWriterInterface.h"
#include "syslib/LogLevel.h"

namespace quorbel {

class SharedWriter;

/// Where the entries of a log are written; the numbers are the ones that programs configure.
enum class LogThreading { Single = 0, Multi = 1 };

}  // namespace quorbel

/// The event log of one module: reads the module's section of `cvlogs.ini`, owns the writer chosen there and
/// hands every entry at or above the threshold to it.
///
/// A program creates one object per module it speaks for; from then on any code finds it by GetInstance. The
/// creator owns the object, the registry only points to it. An object that is not deleted stays usable while
/// static objects are destroyed. Failures go to the system log, never to the caller. Any thread may log;
/// creation, Start, Stop and destruction belong to one thread.
///
/// An entry is written as a whole: a thread that is killed ends before or after it, at the beginning of its
/// next entry at the latest. A single-threaded log may be carried over a fork that no other thread logs
/// during; a multi-threaded one refuses every entry in the child.
class CVsysEventLogInterface : public CVLogInterface {
public:
    /// Builds and registers the log of `module`; the first one becomes the default instance.
    ///
    /// The single-threaded form is ready on return, or registered and not ready when its writer could not be
    /// set up (see IsReady); the multi-threaded one waits for Start. Null when there is no writer at all:
    /// `cvlogs.ini` is there and cannot be read, or names an unknown writer. `furtherName` names the logger
    /// instead of the module. An empty `configDirectory` stands for the program's own, and is refused when that
    /// is not set. A relative one is taken from the directory that the program is in now.
    static std::unique_ptr<CVsysEventLogInterface> Create(const std::string& module,
                                                          quorbel::LogThreading threading,
                                                          const std::string& configDirectory,
                                                          const std::string& furtherName = {});

    /// The default instance. Throws a `char*` that stays valid until the thread's next failing call.
    /// `line` and `file` say who asked.
    static CVsysEventLogInterface* GetInstance(int line = -1, const char* file = nullptr);
    /// The instance of a module, whose name must match letter for letter; throws like the other form.
    static CVsysEventLogInterface* GetInstance(const std::string& module, int line = -1,
                                               const char* file = nullptr);

    /// The directory of log files that no `filePath` names, for logs created later; an empty one means bare
    /// file names. Never called: "logs" beside the configuration directory.
    static void SetDefaultLogDirectory(const std::string& directory);

    /// For programs that serve request after request: begins the next one. From here on the process waits a
    /// minute in all for its logs, until the next call; a program that never calls it waits for each entry.
    static void BeginRun();

    ~CVsysEventLogInterface() override;

    CVsysEventLogInterface(const CVsysEventLogInterface&) = delete;
    CVsysEventLogInterface& operator=(const CVsysEventLogInterface&) = delete;

    /// Uses a program's own writer; to be called before Start, which then reads no configuration.
    void UseWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer);

    /// Reads the configuration, creates the writer and lets entries in when it is ready; the derived forms
    /// add what they need. False when there is no ready writer, and for any start but the first.
    virtual bool Start();
    /// Refuses entries from now on and lets go of the writer; the object stays registered and writes nothing.
    virtual bool Stop();

    /// Writes one finished message under the same conditions as the level operations: 1 written (or queued),
    /// 0 not. `userText` may be null.
    int Write(quorbel::LogLevel level, const std::string& message, int extra, const char* userText);

    /// True when there is a writer and it is ready. Does not wait for an entry that is being written.
    bool IsReady() const;
    /// What the writer does with entries; says why it writes none.
    quorbel::WriterDescription Describe() const;
    const std::string& ModuleName() const { return module_; }

    /// While clear, operations return 0 and format nothing.
    bool IsEnabled() const { return enabled_.load(std::memory_order_relaxed); }
    void SetEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }

    quorbel::LogLevel Threshold() const { return threshold_.load(std::memory_order_relaxed); }
    /// With LogLevel::None nothing is written until another one is set.
    void SetThreshold(quorbel::LogLevel threshold) { threshold_.store(threshold, std::memory_order_relaxed); }

    /// While set, every message begins with the kernel's id of the calling thread, as `ps -L` shows it.
    void SetThreadIdShown(bool shown) { threadIdShown_.store(shown, std::memory_order_relaxed); }

protected:
    CVsysEventLogInterface(std::string module, std::string configDirectory, std::string furtherName);

    /// The writer, null before Start and after Stop. Keep the pointer for the length of one write.
    std::shared_ptr<quorbel::SharedWriter> Writer() const;

    int WriteEntry(const Entry& entry, va_list arguments) final;

    /// Hands an entry that is to be written to the writer; the result is Write's.
    virtual int Deliver(quorbel::LogLevel level, const std::string& message, int extra,
                        const char* userText) = 0;

private:
    bool Takes(quorbel::LogLevel level) const;
    int Pass(quorbel::LogLevel level, const std::string& message, int extra, const char* userText);
    bool loadWriterConfig();

    const std::string module_;
    const std::string configDirectory_;
    const std::string configPath_;  // empty: there is none
    const std::string furtherName_;
    std::atomic<bool> enabled_{false};
    std::atomic<bool> threadIdShown_{false};
    std::atomic<quorbel::LogLevel> threshold_{quorbel::LogLevel::Info};
    bool startedOnce_ = false;
    mutable std::mutex writerMutex_;  // guards the pointer; the writer has its own lock
    std::shared_ptr<quorbel::SharedWriter> writer_;
};
