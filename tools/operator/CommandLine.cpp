#include "tools/operator/CommandLine.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "tools/operator/Output.h"
#include "tools/operator/Text.h"

// The one file that includes CLI11, which takes as long to compile as all the rest of a program.

namespace quorbel {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

CLI::Option* AddTarget(CLI::App& app, const Option& option, bool* target) {
    return app.add_flag(option.names, *target, option.help);
}

CLI::Option* AddTarget(CLI::App& app, const Option& option, std::string* target) {
    return app.add_option(option.names, *target, option.help);
}

CLI::Option* AddTarget(CLI::App& app, const Option& option, std::vector<std::string>* target) {
    return app.add_option(option.names, *target, option.help);
}

CLI::Option* AddTarget(CLI::App& app, const Option& option, const NumberTarget& target) {
    return app.add_option(option.names, *target.value, option.help)
        ->check(CLI::Range(target.least, target.most).description(""));
}

UsageError OutsideLimits(const std::string& names, const SecondsTarget& target) {
    std::ostringstream text;
    text << names << " is not between " << target.least << " and " << target.most << " seconds";
    return UsageError(text.str());
}

CLI::Option* AddTarget(CLI::App& app, const Option& option, const SecondsTarget& target) {
    const auto assign = [target, names = option.names](double seconds) {
        if (!(seconds >= target.least && seconds <= target.most)) {  // nor is "nan" between them
            throw OutsideLimits(names, target);
        }
        *target.value = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
    };
    return app.add_option_function<double>(option.names, assign, option.help);
}

CLI::Option* AddTarget(CLI::App& app, const Option& option,
                       const std::function<void(const std::string&)>& target) {
    return app.add_option_function<std::string>(option.names, target, option.help);
}

std::string RefuseEmpty(const std::string& value) {
    return value.empty() ? "the value is empty" : "";
}

void AddOptions(CLI::App& app, const std::vector<Option>& options) {
    std::map<std::string, std::vector<CLI::Option*>> groups;
    for (const Option& option : options) {
        CLI::Option* added =
            std::visit([&](const auto& target) { return AddTarget(app, option, target); }, option.target);
        if (!std::holds_alternative<bool*>(option.target)) {
            added->type_name(option.value);
            if (option.names.starts_with('-')) added->allow_extra_args(false);  // one value each time
            if (!option.mayBeEmpty) added->check(RefuseEmpty);
        }
        added->required(option.required);
        if (option.group.empty()) continue;
        for (CLI::Option* other : groups[option.group]) added->excludes(other);
        groups[option.group].push_back(added);
    }
}

std::string UsageText(const CLI::App* app, const std::string& reason) {
    return app->get_name() + ": " + Visible(reason) + "\nTry '" + app->get_name() + " --help'.\n";
}

void AddVersion(CLI::App& app, const std::string& version) {
    app.set_version_flag("--version", version, "Print the version and exit");
}

void Declare(CLI::App& app, const CommandLine& line) {
    const std::string version = std::string(line.name) + " " QUORBEL_VERSION;
    app.failure_message(
        [](const CLI::App* failed, const CLI::Error& error) { return UsageText(failed, error.what()); });
    AddVersion(app, version);
    AddOptions(app, line.options);
    if (line.run) app.callback(line.run);
    if (line.commands.empty()) return;
    app.require_subcommand(1);
    app.fallthrough();
    for (const Command& command : line.commands) {
        CLI::App* added = app.add_subcommand(command.name, command.help);
        AddVersion(*added, version);
        AddOptions(*added, command.options);
        added->footer(command.footer)->callback(command.run);
    }
}

int Parse(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) != 0) return kWrongUsage;
    } catch (const UsageError& error) {
        std::fputs(UsageText(&app, error.what()).c_str(), stderr);
        return kWrongUsage;
    }
    FlushOutput();
    FinishOutput();
    return 0;
}

std::string Joined(const std::string& message, const std::string& cause) {
    return cause.empty() ? message : message + ": " + cause;
}

/// In its own words.
std::string WordsOfFailure() {
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

}  // namespace

std::string OwnSite() {
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path().parent_path();
}

std::string ReasonOfFailure() {
    return Visible(WordsOfFailure());
}

bool ReadOptions(const CommandLine& line, int argc, char** argv) {
    CLI::App app{line.help, line.name};
    Declare(app, line);
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) throw UsageError(error.what());
        app.exit(error);
        FlushOutput();
        return false;
    }
}

int RunTool(const CommandLine& line, int argc, char** argv) {
    try {
        CLI::App app{line.help, line.name};
        Declare(app, line);
        return Parse(app, argc, argv);
    } catch (...) {
        FinishOutput();  // what was printed before it failed comes first
        std::fprintf(stderr, "%s: %s\n", line.name, ReasonOfFailure().c_str());
        return kFailed;
    }
}

}  // namespace quorbel
