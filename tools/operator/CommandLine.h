#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace quorbel {

/// A command line that no one can have meant. RunTool answers it with exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A whole number within limits.
struct NumberTarget {
    std::int64_t* value;
    std::int64_t least;
    std::int64_t most;
};

/// Seconds within limits, with a fraction or without; what is below a millisecond is dropped.
struct SecondsTarget {
    std::chrono::milliseconds* value;
    double least;
    double most;
};

/// Where the value of an option goes. A bool is a switch without a value; a list takes the option more than
/// once, or any number of values that stand alone; a function may refuse the text by a UsageError.
using OptionTarget = std::variant<bool*, std::string*, std::vector<std::string>*, NumberTarget, SecondsTarget,
                                  std::function<void(const std::string&)>>;

struct Option {
    std::string names;  ///< "--level" or "-n,--lines"; "FILE" for a value that stands alone
    std::string value;  ///< what stands for the value in the help
    std::string help;
    OptionTarget target;
    bool required = false;
    /// Refused otherwise: an empty value is mostly a shell variable that was never set.
    bool mayBeEmpty = false;
    /// Of the options of one group, at most one may be given.
    std::string group{};
};

inline Option Required(Option option) {
    option.required = true;
    return option;
}

inline Option AtMostOneOf(const char* group, Option option) {
    option.group = group;
    return option;
}

struct Command {
    const char* name;
    const char* help;
    std::vector<Option> options;
    std::function<void()> run;  ///< prints or throws
    const char* footer = "";
};

/// What a program's command line may hold. A program has commands or is one itself.
struct CommandLine {
    const char* name;
    const char* help;
    std::vector<Option> options;  ///< may stand behind the command, too
    std::vector<Command> commands;
    std::function<void()> run;  ///< of a program without commands
};

/// The directory above the one that this program lies in: its site, when it is installed in one. Empty without /proc.
std::string OwnSite();

/// Reads the command line of a program without commands and runs nothing. False when --help or --version was asked for
/// and printed. Throws UsageError.
bool ReadOptions(const CommandLine& line, int argc, char** argv);

/// What the exception that is being handled tells an operator, in one line without control characters.
std::string ReasonOfFailure();

/// Parses the command line and runs what it names. --help and --version are there for every command.
///
/// Gives the program's exit status: 0 done, 1 when the command threw, with the reason on standard error, 2
/// for wrong usage. Control characters in what it prints there are made visible.
int RunTool(const CommandLine& line, int argc, char** argv);

}  // namespace quorbel
