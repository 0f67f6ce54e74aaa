#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace quorbel {

/// Waits until another thread has made `condition` true; false when it has not after a generous while.
inline bool Eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace quorbel
