#pragma once

#include <string>
#include <vector>

#include "resident/Scgi.h"

namespace quorbel {

/// The environment of this process while it serves requests: what it was started with and, of each request, the few
/// variables that the program reads. No other name of a header gets in, so that no request steers the transport or
/// the libraries.
///
/// One object for a process, one thread. Not setenv: that keeps every value it was ever given.
class RequestEnvironment {
public:
    /// Takes over `environ`, less the variables of requests.
    RequestEnvironment();

    /// Makes the request's variables part of the environment, in place of those of the request before.
    void Enter(const ScgiHeader& header);
    /// Leaves only what the process was started with.
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
