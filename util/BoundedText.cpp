#include "util/BoundedText.h"

namespace quorbel {

namespace {

/// How many bytes a sequence has that begins with `lead`; 1 for anything that begins none.
std::size_t SequenceLength(unsigned char lead) {
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    if (lead >= 0xE0) return lead < 0xF0 ? 3 : 1;
    return lead >= 0xC2 ? 2 : 1;
}

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string_view WithoutIncompleteEnd(std::string_view text) {
    std::size_t tail = 0;
    while (tail < 3 && tail < text.size() && IsContinuation(text[text.size() - 1 - tail])) ++tail;
    if (tail == text.size()) return text;
    const std::size_t lead = text.size() - 1 - tail;
    return SequenceLength(static_cast<unsigned char>(text[lead])) > tail + 1 ? text.substr(0, lead) : text;
}

}  // namespace quorbel
