#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace quorbel {

/// Runs `body` (given 0, 1, ...) in that many processes, which all set off at the same moment.
inline void RunTogether(int processes, const std::function<void(int)>& body) {
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    children.reserve(static_cast<std::size_t>(processes));
    for (int number = 0; number < processes; ++number) {
        children.push_back(StartChild([&, number] {
            close(gate[1]);
            char none;
            if (read(gate[0], &none, 1) == 0) body(number);  // ends when the last writer closes
        }));
    }
    close(gate[1]);
    for (const pid_t child : children) EXPECT_EQ(WaitForChild(child), Child::Finished);
    close(gate[0]);
}

}  // namespace quorbel
