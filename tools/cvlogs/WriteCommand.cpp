#include <CLI/CLI.hpp>

#include <memory>
#include <stdexcept>
#include <string>

#include "PathRoutines.h"
#include "syslib/CVsysEventLogInterface.h"
#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/LevelOption.h"
#include "tools/cvlogs/LogConfig.h"
#include "tools/operator/Characters.h"
#include "tools/operator/Program.h"

namespace quorbel {

namespace {

struct Choice {
    std::string configDirectory;
    std::string module;
    EventLevel level = EventLevel::None;
    std::string text;
    bool byWorker = false;
};

using Operation = int (CVLogInterface::*)(const char* context, const char* format, ...);

constexpr struct {
    EventLevel level;
    Operation operation;
} kOperations[] = {
    {EventLevel::Trace, &CVLogInterface::Trace}, {EventLevel::Debug, &CVLogInterface::Debug},
    {EventLevel::Info, &CVLogInterface::Info},   {EventLevel::Warn, &CVLogInterface::Warn},
    {EventLevel::Error, &CVLogInterface::Error}, {EventLevel::Critical, &CVLogInterface::Critical},
    {EventLevel::Fatal, &CVLogInterface::Fatal},
};

bool WriteEntry(CVsysEventLogInterface& log, const Choice& choice) {
    for (const auto& row : kOperations) {
        if (row.level == choice.level) return (log.*row.operation)(nullptr, "%s", choice.text.c_str()) == 1;
    }
    return false;
}

// The log itself tells the system log only.
[[noreturn]] void FailToWrite(const Choice& choice, const CVsysEventLogInterface* log) {
    const ModuleLog configured = LogConfig(choice.configDirectory).Find(choice.module);
    const std::string& cause = configured.destination.notReady;
    if (log != nullptr && log->IsReady() && choice.level < log->Threshold()) {
        throw std::runtime_error("not written: [" + choice.module + "] takes entries from level " +
                                 std::string(EventLevelName(static_cast<unsigned>(log->Threshold()))) +
                                 " on");
    }
    throw std::runtime_error("not written: " + (cause.empty() ? "see the system log" : cause));
}

// The name becomes a line of cvlogs.ini.
void RequireNameOfASection(const std::string& module) {
    constexpr std::size_t kLongest = 200;
    if (module.size() <= kLongest && Shown(module) == module) return;
    throw CLI::ValidationError("--module", "\"" + module + "\" cannot be the name of a section");
}

void Write(const Choice& choice) {
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
    if (!WriteEntry(*log, choice)) FailToWrite(choice, log.get());
    log->Stop();  // a worker writes what it has taken before it ends
}

}  // namespace

void DeclareWrite(CLI::App& app) {
    const auto choice = std::make_shared<Choice>();
    auto* command = app.add_subcommand("write", "Write one entry the way the system's programs do");
    NotEmpty(command->add_option("--config-dir", choice->configDirectory, "Directory of cvlogs.ini"))
        ->type_name("DIR")
        ->required();
    NotEmpty(command->add_option("--module", choice->module, "Module to write for"))
        ->type_name("NAME")
        ->required();
    AddLevelOption(*command, choice->level, "Level of the entry")->required();
    command->add_flag("--worker", choice->byWorker, "Write from a worker thread, as services do");
    command->add_option("TEXT", choice->text, "The message, at most 2047 bytes of it")
        ->type_name("")
        ->required();
    command->footer(
        "Run it as the user of the program in question: files that it makes may shut out other users.\n"
        "A module without a section in cvlogs.ini gets one, as when its program starts.");
    command->callback([choice] { Write(*choice); });
}

}  // namespace quorbel
