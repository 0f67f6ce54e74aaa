#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/TempDir.h"

namespace quorbel {

/// The real resident program at work for one site, until the object goes. Fails the test when it does not end well.
class ResidentProgram {
public:
    /// With a listening socket it is handed that one, as a service manager does, and Socket() means nothing.
    explicit ResidentProgram(const std::string& site, const std::vector<std::string>& options = {},
                             int listening = -1, const std::string& program = QUORBEL_SOAPD);
    ~ResidentProgram();

    ResidentProgram(const ResidentProgram&) = delete;
    ResidentProgram& operator=(const ResidentProgram&) = delete;

    std::string Socket() const { return files_ / "soapd.sock"; }
    /// The answer to one request, without the CGI header; fails the test when that is not the one told.
    std::string Ask(const std::string& body,
                    const std::vector<std::string>& variables = {"REQUEST_METHOD=POST"}) const;

    pid_t Pid() const { return pid_; }
    /// The child processes, dead ones that were not waited for included.
    std::vector<pid_t> Workers() const;
    bool HasZombie() const;
    /// How many descriptors the parent has open.
    std::size_t Descriptors() const;
    /// What it said on standard error so far.
    std::string Messages() const;

    /// SIGTERM; returns the exit status once it is gone.
    int Stop();

private:
    TempDir files_;
    pid_t pid_;
};

/// The state letter of a process as `ps` shows it; '\0' when it is gone.
char ProcessState(pid_t pid);

}  // namespace quorbel
