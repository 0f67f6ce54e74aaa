#include <CLI/CLI.hpp>

#include <memory>
#include <stdexcept>
#include <string>

#include "tools/cvlogs/Commands.h"
#include "tools/cvlogs/DatabaseChoice.h"
#include "tools/operator/Output.h"
#include "tools/operator/Program.h"

namespace quorbel {

namespace {

std::vector<std::string> RequireModules(CVLogDBProcessorInterface& database, const std::string& path) {
    auto modules = database.Modules();
    if (modules.empty()) throw std::runtime_error("no modules in " + path);
    return modules;
}

void PrintModules(const DatabaseChoice& choice) {
    const std::string path = OnlyDatabase(choice);
    const auto database = OpenForReading(path);
    for (const auto& module : RequireModules(*database, path)) PrintLine(module);
}

void Truncate(const DatabaseChoice& choice) {
    const std::string path = OnlyDatabase(choice);
    const auto database = OpenForChanging(path);
    const auto modules = RequireModules(*database, path);
    database->Truncate();
    for (const auto& module : modules) PrintLine(module + " emptied");
}

void Drop(const DatabaseChoice& choice, const std::string& module) {
    const std::string path = DatabaseOf(choice, module);
    OpenForChanging(path, module)->Drop(module);
    PrintLine(module + " dropped");
}

void RequireYes(CLI::App& command) {
    command.add_flag("--yes")->description("Do it: nothing brings the entries back")->required();
}

}  // namespace

void DeclareModules(CLI::App& app) {
    const auto choice = std::make_shared<DatabaseChoice>();
    auto* command = app.add_subcommand("modules", "Print the modules that a log database holds");
    AddDatabaseOptions(*command, *choice);
    command->callback([choice] { PrintModules(*choice); });
}

void DeclareTruncate(CLI::App& app) {
    const auto choice = std::make_shared<DatabaseChoice>();
    auto* command = app.add_subcommand("truncate", "Remove every entry of every module");
    AddDatabaseOptions(*command, *choice);
    RequireYes(*command);
    command->callback([choice] { Truncate(*choice); });
}

void DeclareDrop(CLI::App& app) {
    const auto choice = std::make_shared<DatabaseChoice>();
    const auto module = std::make_shared<std::string>();
    auto* command = app.add_subcommand("drop", "Remove a module with its entries");
    AddDatabaseOptions(*command, *choice);
    command->add_option("MODULE", *module, "The module's name, letter for letter")->type_name("")->required();
    RequireYes(*command);
    command->callback([choice, module] { Drop(*choice, *module); });
}

}  // namespace quorbel
