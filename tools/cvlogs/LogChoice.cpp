#include "tools/cvlogs/LogChoice.h"

#include "syslib/LogConfig.h"
#include "syslib/LogPaths.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/cvlogs/DatabaseSource.h"
#include "tools/cvlogs/FileSource.h"
#include "tools/operator/CommandLine.h"

namespace quorbel {

namespace {

using WriterKind = WriterDescription::Kind;

struct Place {
    WriterKind kind;
    std::string path;
};

// A file of the module's own name, when the configuration wants one for each.
std::string OwnFile(const std::string& path, std::string module) {
    for (char& c : module) {
        if (c == ' ' || c == '/') c = '_';
    }
    return LogDirectoryOf(path) + "/" + module + ".txt";
}

Place Configured(const LogChoice& choice) {
    UseLogDirectory(choice.configDirectory);
    LogConfig config(choice.configDirectory);
    const ModuleLog log = config.Find(choice.module);
    const WriterDescription& writer = log.destination;
    if (writer.path.empty()) {
        throw std::runtime_error("[" + choice.module + "] of " + config.Path() +
                                 " logs to no file and to no database (writer=" + log.writer + ")");
    }
    return {writer.kind, writer.perProcessFile ? OwnFile(writer.path, choice.module) : writer.path};
}

Place Find(const LogChoice& choice) {
    if (!choice.file.empty()) return {WriterKind::File, choice.file};
    if (choice.module.empty()) throw UsageError("which module? --module is required");
    if (!choice.database.empty()) return {WriterKind::Database, choice.database};
    if (choice.configDirectory.empty()) {
        throw UsageError("which log? --file, --db or --config-dir is required");
    }
    return Configured(choice);
}

}  // namespace

std::unique_ptr<LogSource> OpenLog(const LogChoice& choice, const SourceHints& hints) {
    const Place place = Find(choice);
    if (place.kind == WriterKind::File)
        return std::make_unique<FileSource>(place.path, hints.search, hints.follow);
    OpenForReading(place.path, choice.module);  // says what is wrong with it
    return std::make_unique<DatabaseSource>(place.path, choice.module, hints.like);
}

bool IsDatabase(const LogChoice& choice) {
    return Find(choice).kind == WriterKind::Database;
}

}  // namespace quorbel
