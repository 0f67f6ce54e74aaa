#include <stdexcept>
#include <string>

#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/operator/Output.h"

namespace quorbel {

namespace {

std::vector<std::string> RequireModules(CVLogDBProcessorInterface& database, const std::string& path) {
    auto modules = database.Modules();
    if (modules.empty()) throw std::runtime_error("no modules in " + path);
    return modules;
}

}  // namespace

void PrintModules(const DatabaseChoice& choice) {
    const std::string path = OnlyDatabase(choice);
    const auto database = OpenForReading(path);
    for (const auto& module : RequireModules(*database, path)) PrintLine(module);
}

void TruncateDatabase(const DatabaseChoice& choice) {
    const std::string path = OnlyDatabase(choice);
    const auto database = OpenForChanging(path);
    const auto modules = RequireModules(*database, path);
    database->Truncate();
    for (const auto& module : modules) PrintLine(module + " emptied");
}

void DropModule(const DatabaseChoice& choice, const std::string& module) {
    const std::string path = DatabaseOf(choice, module);
    OpenForChanging(path, module)->Drop(module);
    PrintLine(module + " dropped");
}

}  // namespace quorbel
