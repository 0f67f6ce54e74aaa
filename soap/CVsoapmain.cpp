// The program: the web server starts it once for each request, in the directory of CGI programs.

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "process/Translation.h"
#include "soap/AdminRecords.h"
#include "soap/AnswerWriter.h"
#include "soap/CVsoap.h"
#include "soap/CVsoapParser.h"
#include "soap/RequestGlobals.h"
#include "soap/RequestRecord.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/CVsysEventLogModNames.h"
#include "util/BoundedText.h"
#include "util/ConfigPath.h"
#include "util/SpoolDirectories.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

constexpr int kServed = 0;
constexpr int kNotServed = -1;
constexpr char kConfigDirectory[] = "../../config";  // relative to the directory of CGI programs
constexpr char kDirectoryFile[] = "dir";
constexpr char kLogFile[] = "soap_log.txt";
constexpr char kSource[] = "CVsoap";

/// The place for process-wide start-up, and for its counterpart at the end.
bool StartUp() {
    return true;
}
void ShutDown() {}

void ReadSiteDirectories() {
    CopyText(g_strConfigDir, kConfigDirectory);
    LoadDirectoryConfig(kDirectoryFile, g_tDir);
    CopyText(gArguments.logDirectory, DirectoryOf(g_tDir, DirectorySlot::Log));
}

void ReadHostName() {
    gethostname(m_szHostName, sizeof m_szHostName - 1);  // the last byte stays zero: a long name is not ended
    TrimSpaces(m_szHostName);
}

/// The log of module "SOAP", for the rest of the process; null when it cannot be used.
CVsysEventLogInterface* StartLog() {
    MakeConfigPath(m_szPath, sizeof m_szPath, gArguments.logDirectory, kLogFile);
    CVsysEventLogInterface::SetDefaultLogDirectory(gArguments.logDirectory);
    // Never deleted: entries may still come while the process ends.
    CVsysEventLogInterface* log = CVsysEventLogInterface::Create(CVsysEventLogModNames[kSoapModule],
                                                                 LogThreading::Single, g_strConfigDir)
                                      .release();
    if (log == nullptr || !log->IsReady()) return nullptr;
    return CVsysEventLogInterface::GetInstance(__LINE__, kSource);
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

int Refuse(const char* fault) {
    WriteFault(fault);
    return kNotServed;
}

/// Fills the record from the request body; kServed when it holds a well-formed envelope.
int ReadPost(RequestRecord& record, CVLogInterface& log) {
    const HeapText body = ReadRequestBody(log);
    if (!body) return Refuse("2030 Invalid SOAP envelope length");
    log.Trace("", "%s\n", body.get());
    if (ParseEnvelope(body.get(), record, log) == 0) return Refuse("2030 Invalid SOAP message");
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

/// Only memory can run out here. The client is told in the transport's words: silence is taken for success.
void Translate(const RequestRecord& record) {
    try {
        TranslateRequest(record);
    } catch (...) {
        WriteFault("2012", "Out of memory");
    }
}

int Serve(const char* programPath) {
    RequestRecord record;
    WriteHeader();
    StartUp();
    CVsysEventLogInterface* log = SetUp();
    if (log == nullptr) {
        DropRequestBody();
        ShutDown();
        return Refuse("2301 Invalid log directory");
    }
    g_tDept = {};
    g_tUser = {};
    g_tAdminInfo = {};
    g_tUserGroup = {};
    log->Trace(nullptr, "%s\n", std::string(58, '=').c_str());
    log->Trace(nullptr, "Quorbel SOAP [%s] STARTED \n", programPath);
    if (ReadRequest(record, *log) != kServed) return kNotServed;
    Translate(record);
    ShutDown();
    return kServed;
}

}  // namespace

int main(int argc, char** argv) {
    static int running = 0;
    if (running != 0) return kNotServed;
    running = 1;
    return Serve(argc > 0 && argv[0] != nullptr ? argv[0] : "");
}
