#include <stdexcept>
#include <string>

#include "PathRoutines.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/LogConfig.h"
#include "tools/cvlogs/Commands.h"
#include "tools/operator/CommandLine.h"
#include "tools/operator/Text.h"

namespace quorbel {

namespace {

using Operation = int (CVLogInterface::*)(const char* context, const char* format, ...);

constexpr struct {
    LogLevel level;
    Operation operation;
} kOperations[] = {
    {LogLevel::Trace, &CVLogInterface::Trace}, {LogLevel::Debug, &CVLogInterface::Debug},
    {LogLevel::Info, &CVLogInterface::Info},   {LogLevel::Warn, &CVLogInterface::Warn},
    {LogLevel::Error, &CVLogInterface::Error}, {LogLevel::Critical, &CVLogInterface::Critical},
    {LogLevel::Fatal, &CVLogInterface::Fatal},
};

bool WriteAtLevel(CVsysEventLogInterface& log, const WriteChoice& choice) {
    for (const auto& row : kOperations) {
        if (row.level == choice.level) return (log.*row.operation)(nullptr, "%s", choice.text.c_str()) == 1;
    }
    return false;
}

// The log itself tells the system log only.
[[noreturn]] void FailToWrite(const WriteChoice& choice, const CVsysEventLogInterface* log) {
    const ModuleLog configured = LogConfig(choice.configDirectory).Find(choice.module);
    const std::string& cause = configured.destination.notReady;
    if (log != nullptr && log->IsReady() && choice.level < log->Threshold()) {
        throw std::runtime_error("not written: [" + choice.module + "] takes entries from level " +
                                 std::string(LogLevelName(static_cast<unsigned>(log->Threshold()))) + " on");
    }
    throw std::runtime_error("not written: " + (cause.empty() ? "see the system log" : cause));
}

// The name becomes a line of cvlogs.ini.
void RequireNameOfASection(const std::string& module) {
    constexpr std::size_t kLongest = 200;
    if (module.size() <= kLongest && Visible(module) == module) return;
    throw UsageError("--module: \"" + module + "\" cannot be the name of a section");
}

}  // namespace

void WriteEntry(const WriteChoice& choice) {
    RequireNameOfASection(choice.module);
    // The log would make do with defaults in a place that is not meant.
    if (!IsDirectory(choice.configDirectory)) {
        throw std::runtime_error(choice.configDirectory + " is no directory");
    }
    UseLogDirectory(choice.configDirectory);
    const auto threading = choice.byWorker ? LogThreading::Multi : LogThreading::Single;
    const auto log = CVsysEventLogInterface::Create(choice.module, threading, choice.configDirectory);
    if (log == nullptr) FailToWrite(choice, nullptr);
    if (choice.byWorker && !log->Start()) FailToWrite(choice, log.get());
    if (!WriteAtLevel(*log, choice)) FailToWrite(choice, log.get());
    log->Stop();  // a worker writes what it has taken before it ends
}

}  // namespace quorbel
