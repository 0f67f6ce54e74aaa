#include "tools/operator/Program.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "tools/operator/Characters.h"
#include "tools/operator/Output.h"

namespace quorbel {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

std::string Joined(const std::string& message, const std::string& cause) {
    return cause.empty() ? message : message + ": " + cause;
}

/// What the exception that is being handled tells an operator.
std::string Reason() {
    try {
        throw;
    } catch (const CVioException& failure) {
        return failure.GetIoPath() + ": " + Joined(failure.GetMessage(), failure.GetSystemMessage());
    } catch (const CVException& failure) {
        return Joined(failure.GetMessage(), failure.GetSystemMessage());
    } catch (const CVDBexception& failure) {  // has no base class
        return Joined(failure.GetMessage(), failure.GetSystemMessage());
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

int Fail(const CLI::App& app) {
    std::fflush(stdout);  // what was printed before it failed comes first
    std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), Shown(Reason()).c_str());
    return kFailed;
}

std::string UsageError(const CLI::App* app, const CLI::Error& error) {
    return app->get_name() + ": " + Shown(error.what()) + "\nTry '" + app->get_name() + " --help'.\n";
}

void AddVersion(CLI::App& app) {
    const std::string version = app.get_name() + " " QUORBEL_VERSION;
    const std::string help = "Print the version and exit";
    app.set_version_flag("--version", version, help);
    for (auto* command : app.get_subcommands({})) command->set_version_flag("--version", version, help);
}

int Run(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) != 0) return kWrongUsage;
    }
    FlushOutput();
    return 0;
}

}  // namespace

CLI::Option* NotEmpty(CLI::Option* option) {
    return option->check([](const std::string& value) { return value.empty() ? "the value is empty" : ""; });
}

int RunTool(CLI::App& app, int argc, char** argv) {
    try {
        AddVersion(app);
        app.failure_message(UsageError);
        return Run(app, argc, argv);
    } catch (...) {
        return Fail(app);
    }
}

}  // namespace quorbel
