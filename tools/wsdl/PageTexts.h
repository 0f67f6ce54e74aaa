#pragma once

#include <span>
#include <string_view>

namespace quorbel {

/// Whether the paging server may have got, and executed, the command.
enum class Sent { No, Perhaps };

/// A text that the service answers with, and what a client should make of it.
struct TextMeaning {
    std::string_view text;
    Sent sent;
    std::string_view meaning;
};

/// The faults, in the order of their numbers. docs/faults.md has the same ones.
std::span<const TextMeaning> FaultMeanings();

/// The texts that end the response to a message that was not delivered, or stand behind "2012 " in a fault.
/// docs/faults.md and docs/clients.md have the same ones.
std::span<const TextMeaning> FailureMeanings();

/// The page's style sheet and script, the same for every site.
std::string_view PageStyle();
std::string_view PageScript();

}  // namespace quorbel
