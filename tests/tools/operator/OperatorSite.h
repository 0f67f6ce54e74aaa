#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "syslib/CVLogDBProcessorInterface.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TempDir.h"

namespace quorbel {

/// A site of its own for one test, in which the real programs run: config/dir, config/cvlogs.ini, logs/.
/// Their time zone is UTC.
class OperatorSite {
public:
    /// `configuration` is the text of cvlogs.ini; "{SITE}" in it stands for the site's directory.
    explicit OperatorSite(const std::string& configuration = {});

    ProgramResult Logs(const std::vector<std::string>& arguments) const;
    ProgramResult Messages(const std::vector<std::string>& arguments) const;
    /// The program with a terminal as its output; without more of an environment, no pager and no colours.
    ProgramResult LogsOnTerminal(const std::string& arguments, const std::vector<std::string>& environment = {
                                                                   "PAGER=cat", "NO_COLOR=1"}) const;

    /// Stores entries of "SOAP" in the database.
    void Store(const std::vector<LogRecord>& records) const;

    const TempDir& Files() const { return files_; }
    std::string Config() const { return files_ / "config"; }
    std::string Database() const { return files_ / "logs/events.sdb"; }
    /// Every file below the site with its size, to show that nothing was made or changed.
    std::string Listing() const;

private:
    TempDir files_;
};

/// When an entry that a test stores was written: 02/01/2024 09:05:03.
inline constexpr std::int64_t kEntryTime = 1706778303;

/// The exit status and all that a program printed: "0 output" or "1 errors".
std::string Outcome(const ProgramResult& result);

/// Runs `body` as a user who may not write what root has made; at once when the test is run by such a one.
ProgramResult AsNobody(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace quorbel
