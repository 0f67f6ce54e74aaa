#define PCRE2_CODE_UNIT_WIDTH 8
#include "tools/cvlogs/Pattern.h"

#include <pcre2.h>

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

#include "tools/operator/CommandLine.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

// In doubt no: anchors, groups with a question mark, escapes of letters, and quantifiers that give nothing
// back.
bool LooksAtNoSurroundings(std::string_view expression) {
    for (const char* part : {"^", "$", "(?", "(*", "*+", "++", "?+", "}+"}) {
        if (expression.find(part) != expression.npos) return false;
    }
    for (std::size_t at = expression.find('\\'); at != expression.npos; at = expression.find('\\', at + 2)) {
        if (at + 1 == expression.size() || IsAlphanumeric(expression[at + 1])) return false;
    }
    return true;
}

std::string TextOf(int error) {
    std::array<PCRE2_UCHAR, 256> text{};
    pcre2_get_error_message(error, text.data(), text.size());
    return reinterpret_cast<const char*>(text.data());
}

PCRE2_SPTR Bytes(std::string_view text) {
    return reinterpret_cast<PCRE2_SPTR>(text.data());
}

}  // namespace

void Pattern::FreeCode::operator()(pcre2_code* code) const noexcept {
    pcre2_code_free(code);
}

void Pattern::FreeMatch::operator()(pcre2_match_data* match) const noexcept {
    pcre2_match_data_free(match);
}

Pattern::Pattern(const std::string& expression) : isLocal_(LooksAtNoSurroundings(expression)) {
    const bool ascii = std::all_of(expression.begin(), expression.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    int error = 0;
    PCRE2_SIZE at = 0;
    code_.reset(pcre2_compile(Bytes(expression), expression.size(),
                              ascii ? 0 : PCRE2_UTF | PCRE2_MATCH_INVALID_UTF, &error, &at, nullptr));
    if (!code_) {
        throw UsageError("\"" + expression + "\" is no regular expression: " + TextOf(error) +
                         " at character " + std::to_string(at));
    }
    pcre2_jit_compile(code_.get(), PCRE2_JIT_COMPLETE);  // without it matches are slower, no more
    match_.reset(pcre2_match_data_create(1, nullptr));
    if (!match_) throw std::bad_alloc();
}

std::size_t Pattern::Find(std::string_view text, std::size_t from) const {
    const int found = pcre2_match(code_.get(), Bytes(text), text.size(), from, 0, match_.get(), nullptr);
    if (found >= 0) return pcre2_get_ovector_pointer(match_.get())[0];
    if (found == PCRE2_ERROR_NOMATCH) return kNone;
    throw std::runtime_error("the regular expression takes too long: " + TextOf(found));
}

}  // namespace quorbel
