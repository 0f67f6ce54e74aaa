#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

/// One command as it arrived: the order counts and names may come more than once (each response action
/// brings its own "response", "action" and "final").
using Pairs = std::vector<std::pair<std::string, std::string>>;

/// The pairs of an urlencoded body. A piece without "=" is a name with an empty value; a broken %XX stays as
/// written.
Pairs ParseForm(std::string_view body);

/// The first value of that name; empty when there is none.
std::string Value(const Pairs& pairs, std::string_view name);

/// Gives the first pair of that name a new value, or appends one.
void SetValue(Pairs& pairs, std::string_view name, std::string value);

/// `text` with its control characters made visible, so that it takes one line wherever it is shown.
std::string OneLine(std::string_view text);

}  // namespace standin
