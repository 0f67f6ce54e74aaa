#pragma once

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quorbel {

/// Refuses an empty value, which is mostly a shell variable that was never set; returns its argument.
CLI::Option* NotEmpty(CLI::Option* option);

/// Parses the command line and runs the command it names, whose callback prints or throws.
///
/// Gives the program's exit status: 0 done (also for --help and --version, which every command gets here),
/// 1 when the command threw, with the reason on standard error, 2 for wrong usage. A callback throws
/// CLI::ParseError for usage that only it can judge.
int RunTool(CLI::App& app, int argc, char** argv);

}  // namespace quorbel
