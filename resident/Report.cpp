#include "resident/Report.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "CVsystemLog.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kSource[] = "Supervisor";

/// The system log gives "%" a meaning of its own.
std::string WithoutPercent(std::string text) {
    for (char& c : text) {
        if (c == '%') c = '?';
    }
    return text;
}

std::string Plain(const char* text) {
    std::string plain;
    for (; *text != '\0'; ++text) plain += IsPrintable(*text) ? *text : '?';
    return plain;
}

/// systemd's journal then has the message already, from the system log. It names the stream that it reads.
bool JournalReadsStandardError() {
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status = {};
    return stream != nullptr && fstat(STDERR_FILENO, &status) == 0 &&
           std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
}

void ToStandardError(const std::string& text) {
    if (JournalReadsStandardError()) return;
    std::fprintf(stderr, "%s: %s\n", kServiceName, text.c_str());
}

}  // namespace

void ReportError(const std::string& text) {
    ToStandardError(text);
    CVsystemLog::WriteError(kSource, kServiceName, "%s", WithoutPercent(text).c_str());
}

void ReportInfo(const std::string& text) {
    ToStandardError(text);
    CVsystemLog::WriteInfo(kSource, kServiceName, "%s", WithoutPercent(text).c_str());
}

std::string DescribeSignal(int signal) {
    const char* name = sigdescr_np(signal);
    return "signal " + std::to_string(signal) + (name == nullptr ? "" : " (" + std::string(name) + ")");
}

std::string DescribeWork(WorkerState state, const RequestNote& note) {
    if (state != WorkerState::Serving) return "between requests";
    std::string text = "in request " + std::to_string(note.number) + " (";
    if (note.method[0] != '\0') text += Plain(note.method) + " from " + Plain(note.peer) + ", ";
    if (note.id[0] != '\0') text += "id " + Plain(note.id) + ", ";
    return text + "begun " + std::to_string(std::time(nullptr) - note.started) + " s ago)";
}

}  // namespace quorbel
