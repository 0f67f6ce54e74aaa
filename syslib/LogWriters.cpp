#include "syslib/LogWriters.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <mutex>
#include <utility>

#include "NoCancellation.h"
#include "syslib/CVsysEventLogFileWriter.h"
#include "syslib/CVsysEventLogSQLiteWriter.h"
#include "syslib/LogPaths.h"
#include "syslib/LogReport.h"
#include "syslib/LogText.h"
#include "util/FileStamp.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using WriterPointer = std::unique_ptr<CVsysEventLogWriterInterface>;

/// Writes entries to standard error, each as one line; a web server keeps that stream in its error log.
/// Standard output is never used: it is the answer to the client.
class StandardErrorWriter : public CVsysEventLogWriterInterface {
public:
    bool setProperty(const std::string& /*key*/, const std::string& /*value*/) override { return true; }
    bool isReady() override { return true; }
    WriterDescription Describe() const override { return {.kind = WriterDescription::Kind::ErrorStream}; }

    int DoWork(const std::string& module, unsigned level, const std::string& message, int /*extra*/,
               const char* /*userText*/, std::time_t time) override {
        std::string line = LogLine(module, level, SafeLogText(message), time);
        if (!line.ends_with('\n')) line += '\n';
        ssize_t written = -1;
        do {
            written = write(STDERR_FILENO, line.data(), line.size());
        } while (written < 0 && errno == EINTR);
        return written == static_cast<ssize_t>(line.size()) ? 1 : 0;
    }
};

template <class Writer>
std::unique_ptr<Writer> Configured(std::unique_ptr<Writer> writer, const LogSettings& settings) {
    for (const auto& [key, value] : settings.properties) writer->setProperty(key, value);
    return writer;
}

WriterPointer MakeFileWriter(const LogSettings& settings, const std::string& module, WriterMode mode) {
    auto writer = Configured(std::make_unique<CVsysEventLogFileWriter>(module, mode), settings);
    writer->PrepareDirectory();
    return writer;
}

WriterPointer MakeSQLiteWriter(const LogSettings& settings, const std::string& module, WriterMode mode) {
    return Configured(std::make_unique<CVsysEventLogSQLiteWriter>(module, mode), settings);
}

WriterPointer MakeStandardErrorWriter(const LogSettings& settings, const std::string& /*module*/,
                                      WriterMode /*mode*/) {
    return Configured(std::make_unique<StandardErrorWriter>(), settings);
}

// The words of the key `writer`; "common" stands for the writer that the section "[common]" chooses from
// these.
constexpr struct {
    const char* word;
    WriterPointer (*make)(const LogSettings& settings, const std::string& module, WriterMode mode);
} kWriters[] = {
    {"file", MakeFileWriter},
    {"sqlite", MakeSQLiteWriter},
    {"qtdebug", MakeStandardErrorWriter},
};

WriterPointer MakeWriter(const LogSettings& settings, const std::string& module, WriterMode mode) {
    for (const auto& row : kWriters) {
        if (EqualNoCase(settings.writer, row.word)) return row.make(settings, module, mode);
    }
    return nullptr;
}

// The first writer of a name is "<name>_logger", the later ones "<name>(02)_logger" and so on.
std::string NextLoggerName(const std::string& name) {
    static auto* const uses = new std::map<std::string, int>;
    const int use = ++(*uses)[name];
    if (use == 1) return name + "_logger";
    char number[16];
    std::snprintf(number, sizeof number, "(%02d)", use);
    return name + number + "_logger";
}

std::shared_ptr<SharedWriter> MakeNamedWriter(const LogSettings& settings, const std::string& module,
                                              const std::string& name) {
    auto writer = MakeWriter(settings, module, WriterMode::Write);
    if (!writer) return nullptr;
    return std::make_shared<SharedWriter>(std::move(writer), NextLoggerName(name));
}

// Modules that choose "common" share one writer, and with it one file, in this process, for as long as the
// configuration stays the same.
std::shared_ptr<SharedWriter> CommonWriter(const LogOwner& owner) {
    struct Shared {
        std::shared_ptr<SharedWriter> writer;
        FileStamp stamp;
    };
    static auto* const shared = new std::map<std::string, Shared>;
    const FileStamp stamp(owner.configPath);
    const auto known = shared->find(owner.configPath);
    if (known != shared->end() && known->second.stamp == stamp && known->second.writer->IsReady()) {
        return known->second.writer;
    }
    const auto settings =
        LoadLogSettings(owner.configPath, "common", DefaultLogPath("common_logs.txt", owner.configDirectory));
    if (!settings) {
        ReportLogFailure("CVsysEventLogInterface::getModuleLoggerWriter", owner.module,
                         "Unable to load/read config/logs.ini file.");
        return nullptr;
    }
    auto writer = MakeNamedWriter(*settings, owner.module, "common_logs");
    if (writer) shared->insert_or_assign(owner.configPath, Shared{writer, FileStamp(owner.configPath)});
    return writer;
}

}  // namespace

SharedWriter::SharedWriter(std::unique_ptr<CVsysEventLogWriterInterface> writer, std::string name)
    : writer_(std::move(writer)), wasReady_(writer_->isReady()), name_(std::move(name)) {}

int SharedWriter::Write(const std::string& module, unsigned level, const std::string& message, int extra,
                        const char* userText, std::time_t time) {
    const NoCancellation untilWritten;
    const ScopedLock lock(&lock_);
    const int result = writer_->DoWork(module, level, message, extra, userText, time);
    wasReady_ = writer_->isReady();
    return result;
}

bool SharedWriter::IsReady() {
    const NoCancellation untilAsked;
    if (!lock_.TryLock()) return wasReady_;
    const bool ready = writer_->isReady();
    lock_.Unlock();
    return ready;
}

WriterDescription SharedWriter::Describe() {
    const NoCancellation untilAsked;
    const ScopedLock lock(&lock_);
    return writer_->Describe();
}

std::shared_ptr<SharedWriter> CreateLogWriter(const LogSettings& settings, const LogOwner& owner) {
    static auto* const oneAtATime = new std::mutex;  // protects the shared writer and the names given
    const std::lock_guard lock(*oneAtATime);
    if (EqualNoCase(settings.writer, "common")) return CommonWriter(owner);
    return MakeNamedWriter(settings, owner.module, owner.name.empty() ? owner.module : owner.name);
}

WriterDescription DescribeLogWriter(const LogSettings& settings, const std::string& module) {
    const auto writer = MakeWriter(settings, module, WriterMode::Look);
    if (writer) return writer->Describe();
    return {.notReady = "there is no writer \"" + settings.writer + "\""};
}

bool IsLogWriter(std::string_view name) {
    for (const auto& row : kWriters) {
        if (EqualNoCase(name, row.word)) return true;
    }
    return false;
}

}  // namespace quorbel
