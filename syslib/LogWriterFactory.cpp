#include "syslib/LogWriterFactory.h"

#include <cstdio>
#include <map>
#include <mutex>

#include "syslib/CVsysEventLogFileWriter.h"
#include "syslib/CVsysEventLogSQLiteWriter.h"
#include "syslib/LogLocations.h"
#include "syslib/LogReport.h"
#include "syslib/StandardErrorWriter.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using WriterPointer = std::unique_ptr<CVsysEventLogWriterInterface>;

template <class Writer>
std::unique_ptr<Writer> Configured(std::unique_ptr<Writer> writer, const LogSettings& settings) {
    for (const auto& [key, value] : settings.properties) writer->setProperty(key, value);
    return writer;
}

WriterPointer MakeFileWriter(const LogSettings& settings, const std::string& module) {
    auto writer = Configured(std::make_unique<CVsysEventLogFileWriter>(module), settings);
    writer->PrepareDirectory();
    return writer;
}

WriterPointer MakeSQLiteWriter(const LogSettings& settings, const std::string& module) {
    return Configured(std::make_unique<CVsysEventLogSQLiteWriter>(module), settings);
}

WriterPointer MakeStandardErrorWriter(const LogSettings& settings, const std::string& /*module*/) {
    return Configured(std::make_unique<StandardErrorWriter>(), settings);
}

// The words of the key `writer`; "common" stands for the writer that the section "[common]" chooses from
// these.
constexpr struct {
    const char* word;
    WriterPointer (*make)(const LogSettings& settings, const std::string& module);
} kWriters[] = {
    {"file", MakeFileWriter},
    {"sqlite", MakeSQLiteWriter},
    {"qtdebug", MakeStandardErrorWriter},
};

// The first writer of a name is "<name>_logger", the later ones "<name>(02)_logger" and so on.
std::string NextLoggerName(const std::string& name) {
    static auto* const uses = new std::map<std::string, int>;
    const int use = ++(*uses)[name];
    if (use == 1) return name + "_logger";
    char number[16];
    std::snprintf(number, sizeof number, "(%02d)", use);
    return name + number + "_logger";
}

std::shared_ptr<GuardedWriter> MakeOwnWriter(const LogSettings& settings, const std::string& module,
                                             const std::string& name) {
    for (const auto& row : kWriters) {
        if (!EqualNoCase(settings.writer, row.word)) continue;
        return std::make_shared<GuardedWriter>(row.make(settings, module), NextLoggerName(name));
    }
    return nullptr;
}

// Modules that choose "common" share one writer, and with it one file, in this process.
std::shared_ptr<GuardedWriter> CommonWriter(const LogOwner& owner) {
    static auto* const shared = new std::shared_ptr<GuardedWriter>;
    if (*shared && (*shared)->IsReady()) return *shared;
    const auto settings = LoadLogSettings(LogConfigPath(owner.configDirectory), "common",
                                          DefaultLogPath("common_logs.txt", owner.configDirectory));
    if (!settings) {
        ReportLogFailure("CVsysEventLogInterface::getModuleLoggerWriter", owner.module,
                         "Unable to load/read config/logs.ini file.");
        return nullptr;
    }
    // "sample" fills the place of a module name; every entry carries its own.
    return *shared = MakeOwnWriter(*settings, "sample", "common_logs");
}

}  // namespace

std::shared_ptr<GuardedWriter> CreateLogWriter(const LogSettings& settings, const LogOwner& owner) {
    static auto* const oneAtATime = new std::mutex;  // guards the shared writer and the names given
    const std::lock_guard guard(*oneAtATime);
    if (EqualNoCase(settings.writer, "common")) return CommonWriter(owner);
    return MakeOwnWriter(settings, owner.module, owner.name.empty() ? owner.module : owner.name);
}

}  // namespace quorbel
