#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "cvdblib/sqlite3/src/DatabaseFile.h"
#include "tools/cvmessages/ConstantsFault.h"
#include "tools/operator/Output.h"
#include "tools/operator/Program.h"

using namespace quorbel;

namespace {

/// What the command line chose.
struct Choice {
    std::string configDirectory;
    std::string file;
    std::int32_t id = 0;
};

// Looking must not create a catalogue, and the database would spend 25 s on a path that cannot be read.
std::string ReadableCatalogue(const Choice& choice) {
    const std::string path = CVMessageManager::GetDBFilePath(choice.configDirectory);
    if (IsReadableDatabase(path)) return path;
    const bool readable = access(path.c_str(), R_OK) == 0;
    throw std::runtime_error("no catalogue at " + path + ": " +
                             (readable ? "not a regular file" : GetSystemErrorText()));
}

void Load(const Choice& choice) {
    const std::string path = CVMessageManager::GetDBFilePath(choice.configDirectory);
    // Before the load, which creates a catalogue where there is none, even when it fails.
    const std::string fault = FindConstantsFault(choice.file);
    if (!fault.empty()) throw std::runtime_error(fault + "; the catalogue is as it was");
    if (!CVMessageManager::LoadMessageConstants(choice.file)) {
        throw std::runtime_error(path + " is busy; the catalogue is as it was");
    }
    PrintLine(path + " now holds " + std::to_string(CVMessageManager::GetMessages().size()) + " messages");
}

void Get(const Choice& choice) {
    const std::string path = ReadableCatalogue(choice);
    CVMessageManager::GetInstance();  // tells of a damaged file, where the look-up finds nothing
    const std::string text = CVMessageManager::GetMessage(choice.id);
    if (text.empty()) throw std::runtime_error("no message " + std::to_string(choice.id) + " in " + path);
    PrintLine(text);
}

void List(const Choice& choice) {
    const std::string path = ReadableCatalogue(choice);
    const auto messages = CVMessageManager::GetMessages();
    if (messages.empty()) throw std::runtime_error("no messages in " + path);
    for (const auto& message : messages) PrintLine(std::to_string(message.id) + " " + message.text);
}

void Declare(CLI::App& app, Choice& choice) {
    const auto command = [&](void (*run)(const Choice&), const char* name, const char* description) {
        return app.add_subcommand(name, description)->callback([&choice, run] { run(choice); });
    };
    app.require_subcommand(1);
    app.fallthrough();  // --config-dir may stand behind the command, too
    NotEmpty(app.add_option("--config-dir", choice.configDirectory,
                            "Directory of messages.sdb (default: /usr/local/corvane/config)"))
        ->type_name("DIR");
    NotEmpty(command(Load, "load", "Replace the whole catalogue by a constants file")
                 ->add_option("FILE", choice.file,
                              "Header with lines like: #define MSG_DISK 7202 /* Disk full */"))
        ->type_name("")
        ->required();
    command(Get, "get", "Print the text of one message")
        ->add_option("ID", choice.id, "The message's number")
        ->type_name("")
        ->required();
    command(List, "list", "Print all messages, each with its number in front");
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Loads and shows the catalogue of numbered messages.", "cvmessages"};
    Choice choice;
    Declare(app, choice);
    return RunTool(app, argc, argv);
}
