#pragma once

#include <memory>
#include <string>
#include <string_view>

struct pcre2_real_code_8;
struct pcre2_real_match_data_8;

namespace quorbel {

/// A regular expression as Perl has them. For one thread at a time.
class Pattern {
public:
    static constexpr std::size_t kNone = std::string_view::npos;

    /// Throws UsageError for what is no regular expression.
    explicit Pattern(const std::string& expression);

    /// Where the first match begins, not before `from`; kNone when there is none.
    std::size_t Find(std::string_view text, std::size_t from = 0) const;

    /// Whether a match in a part of a text is always found in the whole text, too. It is not for an
    /// expression that looks at what stands around the match.
    bool IsLocal() const { return isLocal_; }

private:
    struct FreeCode {
        void operator()(pcre2_real_code_8* code) const noexcept;
    };
    struct FreeMatch {
        void operator()(pcre2_real_match_data_8* match) const noexcept;
    };

    std::unique_ptr<pcre2_real_code_8, FreeCode> code_;
    std::unique_ptr<pcre2_real_match_data_8, FreeMatch> match_;
    bool isLocal_;
};

}  // namespace quorbel
