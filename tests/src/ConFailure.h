#pragma once

#include <functional>
#include <string>

#include "CVException.h"

namespace quorbel {

/// Message and system message of the CVconException that `action` throws.
inline std::string ConFailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const CVconException& exception) {
        return exception.GetMessage() + "|" + exception.GetSystemMessage();
    }
    return "nothing";
}

}  // namespace quorbel
