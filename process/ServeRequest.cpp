#include "process/ServeRequest.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "process/AllowedServers.h"
#include "process/CVCSoapProcess.h"
#include "process/DeliveryJournal.h"
#include "process/Translation.h"
#include "soap/AnswerWriter.h"
#include "soap/CVsoap.h"
#include "soap/CVsoapParser.h"
#include "soap/Methods.h"
#include "soap/RequestRecord.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/CVsysEventLogModNames.h"
#include "syslib/LogPaths.h"
#include "util/BoundedText.h"
#include "util/FileStamp.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

// The logs that a run writes. They are kept from one run to the next, which costs a look at the status of cvlogs.ini and
// of the log file; they are set up again as soon as that configuration or the log directory is another one, or the file
// can no longer be written. A database is opened anew for each run, so their pointers are fetched again for each run.
// Logs in files may be carried over a fork.

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

/// The log of module "SOAP"; null when it cannot be used. Throws std::bad_alloc.
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

/// The delivery journal, for the directories that RunLog was called with; null when the site keeps none or it cannot be
/// opened. Throws std::bad_alloc.
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

/// Deletes those that must not be carried over a fork.
void DropLogsBeforeFork() {
    Logs& logs = OfProcess();
    if (!MayBeKept(logs.run) || (logs.journal && !MayBeKept(logs.journal))) logs = {};
}

constexpr int kServed = 0;
constexpr int kNotServed = -1;
constexpr char kConfigDirectory[] = "../../config";  // relative to the directory of CGI programs
constexpr char kDirectoryFile[] = "dir";
constexpr char kLogFile[] = "soap_log.txt";
/// Memory of this size goes back to the system when it is freed; else each large value that a request holds for a moment
/// would count until the end.
constexpr int kReturnedAtOnce = 1 << 20;

/// The same as assigning an empty record, which costs several walks over all of it.
template <typename Record>
void BeginAnew(Record& record) {
    static_assert(std::is_nothrow_default_constructible_v<Record>);
    std::destroy_at(&record);
    std::construct_at(&record);
}

/// The place for process-wide start-up, and for its counterpart at the end.
void StartUp() {
    [[maybe_unused]] static const int once = mallopt(M_MMAP_THRESHOLD, kReturnedAtOnce);
}
void ShutDown() {}

/// Reads the directory file unless it is known to be as it was read last.
void ReadSiteDirectories() {
    static FileStamp known;
    CopyText(g_strConfigDir, kConfigDirectory);
    const FileStamp now(std::string(kConfigDirectory) + "/" + kDirectoryFile);
    if (!known.IsReliable() || !(now == known)) {
        known = {};  // what fails in the middle counts as not read
        std::memset(g_tDir, 0, sizeof g_tDir);
        LoadDirectoryConfig(kDirectoryFile, g_tDir);
        known = now;
    }
    CopyText(gArguments.logDirectory, DirectoryOf(g_tDir, DirectorySlot::Log));
}

void ReadHostName() {
    gethostname(m_szHostName, sizeof m_szHostName - 1);  // the last byte stays zero: a long name is not ended
    TrimSpaces(m_szHostName);
}

/// The log of module "SOAP"; null when it cannot be used.
CVsysEventLogInterface* StartLog() {
    MakeConfigPath(m_szPath, sizeof m_szPath, gArguments.logDirectory, kLogFile);
    if (RunLog(g_strConfigDir, gArguments.logDirectory) == nullptr) return nullptr;
    return CVsysEventLogInterface::GetInstance(__LINE__, kRequestSource);
}

/// A site that cannot be read is reported like one that cannot log: the operator looks at the same place for
/// both.
CVsysEventLogInterface* SetUp() {
    try {
        ReadHostName();  // first: the fault of a site that cannot be read names this machine, too
        ReadSiteDirectories();
        return StartLog();
    } catch (...) {
        return nullptr;
    }
}

int AnswerFault(const char* fault) {
    WriteFault(fault);
    return kNotServed;
}

/// Fills the record from the request body; kServed when it holds a well-formed envelope.
int ReadPost(RequestRecord& record, CVLogInterface& log) {
    const HeapText body = ReadRequestBody(log);
    if (!body) return AnswerFault("2030 Invalid SOAP envelope length");
    log.Trace("", "%s\n", body.get());
    if (ParseEnvelope(body.get(), record, log) == 0) return AnswerFault("2030 Invalid SOAP message");
    return kServed;
}

/// A GET goes on with an empty record, which translation refuses; any other method gets no answer at all.
int ReadRequest(RequestRecord& record, CVLogInterface& log) {
    const char* method = std::getenv("REQUEST_METHOD");
    log.Trace(nullptr, "REQUEST_METHOD=%s", method == nullptr ? "(NULL)" : method);
    if (method == nullptr) return kNotServed;
    if (std::string(method) == "POST") return ReadPost(record, log);
    DropRequestBody();
    return std::string(method) == "GET" ? kServed : kNotServed;
}

/// The delivery journal; null when there is none. A GET is a health check, which it does not tell. A journal that cannot
/// be opened stops no page.
CVsysEventLogInterface* Journal() {
    const char* method = std::getenv("REQUEST_METHOD");
    if (method == nullptr || std::string_view(method) != "POST") return nullptr;
    try {
        return RunJournal();
    } catch (...) {
        return nullptr;
    }
}

/// Only memory can run out here. The client is told in the transport's words.
void Translate(const RequestRecord& record) {
    DeliveryJournal journal(Journal(), record);
    try {
        TranslateRequest(record, journal);
    } catch (...) {
        WriteFault("2012", "Out of memory");
        journal.Failed("2012 Out of memory");
    }
}

}  // namespace

void ResetRun() {
    CVsysEventLogInterface::BeginRun();
    BeginAnswer();
    CopyText(g_szCommand, "");
    currentMethodCode = kNoMethod;
    BeginAnew(gArguments);
    g_tDept = {};
    g_tUser = {};
    g_tAdminInfo = {};
    g_tUserGroup = {};
    BeginAnew(gParameters);
    BeginAnew(gMsgParameters);
    soapProcess.Reset();
}

void PrepareRuns() {
    try {
        if (SetUp() != nullptr) {
            RunJournal();
            SiteServers();
        }
    } catch (...) {
        // The run that needs them tells.
    }
    DropLogsBeforeFork();
}

int ServeRequest(const char* programPath) {
    ResetRun();
    RequestRecord record;
    WriteHeader();
    StartUp();
    CVsysEventLogInterface* log = SetUp();
    if (log == nullptr) {
        DropRequestBody();
        ShutDown();
        return AnswerFault("2301 Invalid log directory");
    }
    log->Trace(nullptr, "%s\n", std::string(58, '=').c_str());
    log->Trace(nullptr, "Quorbel SOAP [%s] STARTED \n", programPath);
    if (ReadRequest(record, *log) != kServed) return kNotServed;
    Translate(record);
    ShutDown();
    return kServed;
}

}  // namespace quorbel
