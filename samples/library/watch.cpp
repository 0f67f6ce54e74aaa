// watch DIRECTORY: a small service. Looks once whether a host answers on a port; pages somebody when it does not.
//
// DIRECTORY holds watch.ini, cvlogs.ini and, when it has been loaded, the message catalogue messages.sdb.
// Ends with 0 when the host answered, 1 when somebody was paged, 2 when neither was possible.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "CVException.h"
#include "CVioSocket.h"
#include "LockFile.h"
#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "process/CVCProcess.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/IniReaderWriter.h"
#include "syslib/SocketTrace.h"

namespace {

using namespace std::chrono_literals;
using Log = CVsysEventLogInterface;

struct Settings {
    std::string host, port, pager, recipient;
    int message = 0;
};

Settings ReadSettings(const std::string& path) {
    IniReaderWriter ini(path);
    if (!ini.load()) throw CVException("watch", __LINE__, "Cannot read " + path);
    const auto section = ini.FindSection("[watch]");
    const auto value = [&](const char* key) {
        const std::string* text = ini.FindKey(section, key);
        return text == nullptr ? std::string() : *text;
    };
    return {value("host"), value("port"), value("pager"), value("recipient"),
            std::atoi(value("message").c_str())};
}

/// A log whose entries are written by a thread of its own.
std::unique_ptr<Log> StartLog(const std::string& module, const std::string& directory) {
    auto log = Log::Create(module, quorbel::LogThreading::Multi, directory);
    if (log == nullptr || !log->Start()) throw CVException("watch", __LINE__, "No log for " + module);
    return log;
}

bool Answers(const Settings& settings, Log& log) {
    try {
        CVioSocket socket(quorbel::TraceTo(log));
        socket.Connect(settings.host, settings.port, 5s);
        return true;
    } catch (const CVioException& failure) {
        log.Warn("watch", "%s", failure.ToString().c_str());
        return false;
    }
}

/// Sends messages and keeps what became of them.
class Pager : public CVCCommandProcess {
public:
    explicit Pager(const quorbel::MessagingParameters* message) : CVCCommandProcess(message) {}

    void ShowResult(std::string_view text, std::string_view) override { outcome = text; }
    void ShowReply(std::string_view text) override { outcome = text; }

    std::string outcome;
};

bool Page(const Settings& settings, Log& log, Log& journal) {
    std::string text = CVMessageManager::GetMessage(settings.message);
    if (text.empty()) text = settings.host + " does not answer";

    quorbel::MessagingParameters message;
    message.Set(quorbel::Slot::Url, settings.pager);
    message.Set(quorbel::Slot::Message, text);
    message.recipients = {settings.recipient};
    message.commandCode = quorbel::kStandardSend;

    Pager pager(&message);
    pager.SetEventLog(&log);
    pager.RunMessaging();
    const bool sent = pager.LastPost() && pager.LastPost()->Last().code == 0;
    journal.Info("watch", "%s: %s: %s", settings.recipient.c_str(), text.c_str(), pager.outcome.c_str());
    return sent;
}

int Watch(const std::string& directory) {
    const LockFile onlyOne(directory + "/watch.lock", {.attempts = 1, .pause = 0ms, .sleep = nullptr});
    const Settings settings = ReadSettings(directory + "/watch.ini");
    const auto log = StartLog("System Attendant", directory);
    const auto journal = StartLog("Messages", directory);
    CVMessageManager::PreferDirectory(directory);

    int status = 0;
    if (!Answers(settings, *log)) status = Page(settings, *log, *journal) ? 1 : 2;
    log->Info("watch", "done, status %d", status);
    journal->Stop();  // waits until the threads have written everything
    log->Stop();
    return status;
}

}  // namespace

int main(int count, char** arguments) try {
    return Watch(count > 1 ? arguments[1] : ".");
} catch (const CVException& failure) {
    std::fprintf(stderr, "%s\n", failure.ToString().c_str());
    return 2;
}
