#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "tools/cvmessages/ConstantsFault.h"
#include "tools/operator/CommandLine.h"
#include "tools/operator/Output.h"

using namespace quorbel;

namespace {

/// What the command line chose.
struct Choice {
    std::string configDirectory;
    std::string file;
    std::int64_t id = 0;
};

// Looking must not create a catalogue, and the database would spend 25 s on a path that cannot be read.
std::string ReadableCatalogue(const Choice& choice) {
    std::string path = CVMessageManager::GetDBFilePath(choice.configDirectory);
    if (IsReadableDatabase(path)) return path;
    const bool readable = access(path.c_str(), R_OK) == 0;
    throw std::runtime_error("no catalogue at " + path + ": " +
                             (readable ? "not a regular file" : GetSystemErrorText()));
}

void Load(const Choice& choice) {
    std::string path = CVMessageManager::GetDBFilePath(choice.configDirectory);
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
    const std::string text = CVMessageManager::GetMessage(static_cast<std::int32_t>(choice.id));
    if (text.empty()) throw std::runtime_error("no message " + std::to_string(choice.id) + " in " + path);
    PrintLine(text);
}

void List(const Choice& choice) {
    const std::string path = ReadableCatalogue(choice);
    const auto messages = CVMessageManager::GetMessages();
    if (messages.empty()) throw std::runtime_error("no messages in " + path);
    for (const auto& message : messages) PrintLine(std::to_string(message.id) + " " + message.text);
}

}  // namespace

int main(int argc, char** argv) {
    using Limits = std::numeric_limits<std::int32_t>;
    Choice choice;
    const CommandLine line = {
        .name = "cvmessages",
        .help = "Loads and shows the catalogue of numbered messages.",
        .options = {{"--config-dir", "DIR", "Directory of messages.sdb (default: /usr/local/corvane/config)",
                     &choice.configDirectory}},
        .commands =
            {
                {"load",
                 "Replace the whole catalogue by a constants file",
                 {Required({"FILE", "", "Header with lines like: #define MSG_DISK 7202 /* Disk full */",
                            &choice.file})},
                 [&] { Load(choice); }},
                {"get",
                 "Print the text of one message",
                 {Required({"ID", "", "The message's number",
                            NumberTarget{&choice.id, Limits::min(), Limits::max()}})},
                 [&] { Get(choice); }},
                {"list", "Print all messages, each with its number in front", {}, [&] { List(choice); }},
            },
        .run = {},
    };
    return RunTool(line, argc, argv);
}
