#include "process/RunLogs.h"

#include <memory>
#include <optional>

#include "process/DeliveryJournal.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/CVsysEventLogModNames.h"
#include "syslib/LogPaths.h"
#include "util/FileStamp.h"

namespace quorbel {

namespace {

using LogPointer = std::unique_ptr<CVsysEventLogInterface>;

struct Logs {
    std::string configDirectory;
    std::string logDirectory;
    FileStamp configuration;
    LogPointer run;
    LogPointer journal;
    std::optional<bool> hasJournal;  ///< a section for it
};

// Never deleted: entries may still come while the process ends.
Logs& OfProcess() {
    static auto* const logs = new Logs;
    return *logs;
}

/// A database may have been replaced, which its open connection would not see.
bool MayBeKept(const LogPointer& log) {
    if (!log || !log->IsReady()) return false;
    const WriterDescription writer = log->Describe();
    return writer.kind == WriterDescription::Kind::File && WhyNotWritable(writer.path).empty();
}

bool IsOfNow(const Logs& logs, const FileStamp& configuration, const std::string& logDirectory) {
    return logs.configuration.IsReliable() && logs.configuration == configuration &&
           logs.logDirectory == logDirectory;
}

}  // namespace

CVsysEventLogInterface* RunLog(const std::string& configDirectory, const std::string& logDirectory) {
    Logs& logs = OfProcess();
    const FileStamp configuration(LogConfigPath(configDirectory));
    if (!IsOfNow(logs, configuration, logDirectory)) {
        logs = {};
        logs.configDirectory = configDirectory;
        logs.logDirectory = logDirectory;
        logs.configuration = configuration;
        CVsysEventLogInterface::SetDefaultLogDirectory(logDirectory);
    }
    if (!MayBeKept(logs.run)) {
        logs.run.reset();  // before its place is taken
        logs.run = CVsysEventLogInterface::Create(CVsysEventLogModNames[kSoapModule], LogThreading::Single,
                                                  configDirectory);
    }
    return logs.run && logs.run->IsReady() ? logs.run.get() : nullptr;
}

CVsysEventLogInterface* RunJournal() {
    Logs& logs = OfProcess();
    if (!logs.hasJournal) logs.hasJournal = HasDeliveryLog(logs.configDirectory);
    if (!*logs.hasJournal) return nullptr;
    if (!MayBeKept(logs.journal)) {
        logs.journal.reset();
        logs.journal = OpenDeliveryLog(logs.configDirectory);
    }
    return logs.journal && logs.journal->IsReady() ? logs.journal.get() : nullptr;
}

void DropLogsBeforeFork() {
    Logs& logs = OfProcess();
    if (!MayBeKept(logs.run) || (logs.journal && !MayBeKept(logs.journal))) logs = {};
}

}  // namespace quorbel
