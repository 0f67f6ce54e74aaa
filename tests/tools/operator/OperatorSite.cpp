#include "tests/tools/operator/OperatorSite.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "syslib/CVLogSQLiteProcessor.h"

namespace quorbel {

namespace fs = std::filesystem;

namespace {

const std::vector<std::string> kEnvironment = {"TZ=UTC", "PATH=/usr/bin:/bin"};

ProgramResult Run(const std::string& program, const std::vector<std::string>& arguments,
                  std::vector<std::string> environment = {}) {
    environment.insert(environment.end(), kEnvironment.begin(), kEnvironment.end());
    return RunProgram({.program = program, .arguments = arguments, .environment = environment});
}

}  // namespace

OperatorSite::OperatorSite(const std::string& configuration) {
    files_.Write("config/dir", "log_dir:\t\t" + files_ / "logs" + "\n");
    files_.Write("config/cvlogs.ini",
                 std::regex_replace(configuration, std::regex(R"(\{SITE\})"), files_.Path()));
    fs::create_directory(files_ / "logs");
}

ProgramResult OperatorSite::Logs(const std::vector<std::string>& arguments) const {
    return Run(CVLOGS_PROGRAM, arguments);
}

ProgramResult OperatorSite::Messages(const std::vector<std::string>& arguments) const {
    return Run(CVMESSAGES_PROGRAM, arguments);
}

ProgramResult OperatorSite::LogsOnTerminal(const std::string& arguments,
                                           const std::vector<std::string>& environment) const {
    return Run("/usr/bin/script", {"-qec", std::string(CVLOGS_PROGRAM) + " " + arguments, "/dev/null"},
               environment);
}

void OperatorSite::Store(const std::vector<LogRecord>& records) const {
    CVLogSQLiteProcessor database(Database(), /*create=*/true);
    for (const auto& record : records) database.Insert("SOAP", record);
}

std::string OperatorSite::Listing() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(files_.Path())) {
        const std::string size = entry.is_regular_file() ? std::to_string(entry.file_size()) : "-";
        names.push_back(entry.path().string() + " " + size + "\n");
    }
    std::sort(names.begin(), names.end());
    std::string listing;
    for (const auto& name : names) listing += name;
    return listing;
}

std::string Outcome(const ProgramResult& result) {
    return std::to_string(result.exitStatus) + " " + result.output + result.errors;
}

ProgramResult AsNobody(const std::string& program, const std::vector<std::string>& arguments) {
    if (geteuid() != 0) return Run(program, arguments);
    std::vector<std::string> words = {"--reuid=65534", "--regid=65534", "--clear-groups", program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Run("/usr/bin/setpriv", words);
}

}  // namespace quorbel
