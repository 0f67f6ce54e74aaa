#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// What a program is started with. The environment holds just what is named here.
struct ProgramInput {
    std::string program;
    std::vector<std::string> arguments = {};
    std::vector<std::string> environment = {};  ///< "NAME=value"
    std::string directory = ".";
    std::string input = {};
};

struct ProgramResult {
    int exitStatus = -1;  ///< 128 + the signal's number when one ended the program
    bool timedOut = false;
    std::string output;
    std::string errors;
    long peakMemoryKiB = 0;
};

/// Runs a program to its end, for at most a minute; then it is killed.
ProgramResult RunProgram(const ProgramInput& input);

}  // namespace quorbel
