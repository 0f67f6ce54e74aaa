#include "syslib/CVsysEventLogInterface.h"

#include <pthread.h>

#include <cstdio>
#include <utility>

#include "NoCancellation.h"
#include "syslib/CVsysEventLogMultiThreaded.h"
#include "syslib/CVsysEventLogSingleThreaded.h"
#include "syslib/LogPaths.h"
#include "syslib/LogRegistry.h"
#include "syslib/LogReport.h"
#include "syslib/LogSettings.h"
#include "syslib/LogText.h"
#include "syslib/LogWaits.h"
#include "syslib/LogWriters.h"
#include "util/SpoolDirectories.h"

using namespace quorbel;

namespace {

std::unique_ptr<CVsysEventLogInterface> MakeForm(LogThreading threading, const std::string& module,
                                                 const std::string& configDirectory,
                                                 const std::string& furtherName) {
    switch (threading) {
        case LogThreading::Single:
            return std::make_unique<CVsysEventLogSingleThreaded>(module, configDirectory, furtherName);
        case LogThreading::Multi:
            return std::make_unique<CVsysEventLogMultiThreaded>(module, configDirectory, furtherName);
    }
    return nullptr;
}

// Handlers catch a character string, which has to outlive every frame between here and there.
[[noreturn]] void ThrowUsedBeforeCreation(const std::string& object, const std::string& identity, int line,
                                          const char* file) {
    thread_local char text[1024];
    if (line != -1 && file != nullptr) {
        std::snprintf(text, sizeof text, "%s is called before creation @ line [%d] in file [%s].",
                      object.c_str(), line, file);
    } else {
        std::snprintf(text, sizeof text, "%s is called before creation.", object.c_str());
    }
    ReportLogFailure("CVsysEventLogInterface::GetInstance()", identity, text);
    throw static_cast<char*>(text);
}

}  // namespace

std::unique_ptr<CVsysEventLogInterface> CVsysEventLogInterface::Create(const std::string& module,
                                                                       LogThreading threading,
                                                                       const std::string& configDirectory,
                                                                       const std::string& furtherName) {
    auto log = MakeForm(threading, module, configDirectory, furtherName);
    if (!log) return nullptr;
    if (threading == LogThreading::Single) {
        log->Start();
        if (!log->Writer()) return nullptr;
    }
    LogRegistry::OfProcess().Add(module, log.get());
    return log;
}

CVsysEventLogInterface* CVsysEventLogInterface::GetInstance(int line, const char* file) {
    CVsysEventLogInterface* const log = LogRegistry::OfProcess().Default();
    if (log == nullptr) ThrowUsedBeforeCreation("CVsysEventLogInterface object", {}, line, file);
    return log;
}

CVsysEventLogInterface* CVsysEventLogInterface::GetInstance(const std::string& module, int line,
                                                            const char* file) {
    CVsysEventLogInterface* const log = LogRegistry::OfProcess().Find(module);
    if (log == nullptr) {
        ThrowUsedBeforeCreation("CVsysEventLogInterface object for module [" + module + "]", module, line,
                                file);
    }
    return log;
}

void CVsysEventLogInterface::SetDefaultLogDirectory(const std::string& directory) {
    SetDefaultLogPath(directory);
}

CVsysEventLogInterface::CVsysEventLogInterface(std::string module, std::string configDirectory,
                                               std::string furtherName)
    : module_(std::move(module)),
      configDirectory_(configDirectory.empty() ? std::string(g_strConfigDir) : std::move(configDirectory)),
      configPath_(configDirectory_.empty() ? "" : AbsolutePath(LogConfigPath(configDirectory_))),
      furtherName_(std::move(furtherName)) {}

CVsysEventLogInterface::~CVsysEventLogInterface() {
    CVsysEventLogInterface::Stop();
    LogRegistry::OfProcess().Remove(this);
}

void CVsysEventLogInterface::BeginRun() {
    BeginLogRun();
}

void CVsysEventLogInterface::UseWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer) {
    const std::lock_guard lock(writerMutex_);
    writer_ = std::make_shared<SharedWriter>(std::move(writer));
}

bool CVsysEventLogInterface::Start() {
    const NoCancellation untilSetUp;
    if (std::exchange(startedOnce_, true)) return false;
    if (!Writer() && !loadWriterConfig()) return false;
    SetEnabled(IsReady());
    return IsEnabled();
}

bool CVsysEventLogInterface::Stop() {
    const NoCancellation untilStopped;
    SetEnabled(false);
    const std::lock_guard lock(writerMutex_);
    writer_.reset();
    return true;
}

bool CVsysEventLogInterface::loadWriterConfig() {
    const auto fail = [&](const char* text) {
        ReportLogFailure("CVsysEventLogInterface::loadWriterConfig", module_, text);
        return false;
    };
    constexpr const char* kUnreadable = "Unable to load/read config/cvlogs.ini file.";
    if (configPath_.empty()) return fail(kUnreadable);
    const auto settings =
        LoadLogSettings(configPath_, module_, DefaultLogPath(LogFileName(module_), configDirectory_));
    if (!settings) return fail(kUnreadable);
    SetThreshold(settings->level);
    auto writer = CreateLogWriter(*settings, {module_, configDirectory_, configPath_, furtherName_});
    if (!writer) return fail("Error occurred while creating log writer.");

    const bool ready = writer->IsReady();
    const std::lock_guard lock(writerMutex_);
    writer_ = std::move(writer);
    return ready || fail("Log writer initialization failed. Check cvlogs.ini");
}

std::shared_ptr<SharedWriter> CVsysEventLogInterface::Writer() const {
    const std::lock_guard lock(writerMutex_);
    return writer_;
}

bool CVsysEventLogInterface::IsReady() const {
    const auto writer = Writer();
    return writer && writer->IsReady();
}

WriterDescription CVsysEventLogInterface::Describe() const {
    const auto writer = Writer();
    return writer ? writer->Describe() : WriterDescription{.notReady = "there is no writer"};
}

bool CVsysEventLogInterface::Takes(LogLevel level) const {
    const LogLevel threshold = Threshold();
    return IsEnabled() && level >= threshold && threshold != LogLevel::None;
}

// The writing of an entry cannot be left in the middle, so a kill takes effect before the next one: while there
// is nothing to unwind yet.

int CVsysEventLogInterface::Write(LogLevel level, const std::string& message, int extra,
                                  const char* userText) {
    pthread_testcancel();
    return Takes(level) ? Pass(level, message, extra, userText) : 0;
}

int CVsysEventLogInterface::WriteEntry(const Entry& entry, va_list arguments) {
    if (!Takes(entry.level)) return 0;
    pthread_testcancel();
    const NoCancellation untilWritten;
    const std::string message = BuildLogMessage(entry.context, entry.format, entry.systemError, arguments);
    return Pass(entry.level, message, -1, nullptr);
}

int CVsysEventLogInterface::Pass(LogLevel level, const std::string& message, int extra,
                                 const char* userText) {
    const bool shown = threadIdShown_.load(std::memory_order_relaxed);
    return Deliver(level, shown ? WithThreadId(message) : message, extra, userText);
}
