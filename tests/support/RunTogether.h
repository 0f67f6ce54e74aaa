#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace quorbel {

/// Starts `body` (given 0, 1, ...) in that many processes, which all set off at the same moment.
inline std::vector<pid_t> StartTogether(int processes, const std::function<void(int)>& body) {
    int gate[2];
    EXPECT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    children.reserve(static_cast<std::size_t>(processes));
    for (int number = 0; number < processes; ++number) {
        children.push_back(StartChild([&, number] {
            close(gate[1]);
            char none;
            if (read(gate[0], &none, 1) != 0) throw number;  // ends when the last writer closes
            body(number);
        }));
    }
    close(gate[1]);
    close(gate[0]);
    return children;
}

/// The same; waits until all have finished.
inline void RunTogether(int processes, const std::function<void(int)>& body) {
    for (const pid_t child : StartTogether(processes, body)) EXPECT_EQ(WaitForChild(child), Child::Finished);
}

}  // namespace quorbel
