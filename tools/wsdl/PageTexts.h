#pragma once

#include <span>
#include <string_view>

namespace quorbel {

/// A text that the service answers with, and what a client should make of it.
struct TextMeaning {
    std::string_view text;
    std::string_view meaning;
};

/// The faults, in the order of their numbers.
std::span<const TextMeaning> FaultMeanings();

/// The texts that end the response to a message that was not delivered.
std::span<const TextMeaning> FailureMeanings();

/// The page's style sheet and script, the same for every site.
std::string_view PageStyle();
std::string_view PageScript();

}  // namespace quorbel
