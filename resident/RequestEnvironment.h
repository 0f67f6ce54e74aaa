#pragma once

#include <string>
#include <vector>

#include "resident/Scgi.h"

namespace quorbel {

/// The environment of this process while it serves requests: locale, time zone and paths of what it was started with
/// and, of each request, the few variables that the program reads. Nothing else gets in, so that neither a request nor
/// whoever started the service steers the transport or the libraries.
///
/// One object for a process, one thread. Not setenv: that keeps every value it was ever given.
class RequestEnvironment {
public:
    /// Takes over `environ`, less all that is not kept.
    RequestEnvironment();

    /// Makes the request's variables part of the environment, in place of those of the request before.
    void Enter(const ScgiHeader& header);
    /// Leaves only what is kept of what the process was started with.
    void Leave();

    RequestEnvironment(const RequestEnvironment&) = delete;
    RequestEnvironment& operator=(const RequestEnvironment&) = delete;

private:
    void Publish();

    std::vector<char*> started_;
    std::vector<std::string> request_;
    std::vector<char*> pointers_;
};

}  // namespace quorbel
