#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorbel {

// The plain text routines that the rest of the program shares. All work on bytes in the C locale, whatever
// the environment says: bytes above ASCII are never letters, never printable and never white space.

bool IsSpace(char c);
bool IsAlphanumeric(char c);
bool IsPrintable(char c);

}  // namespace quorbel

/// Removes white space at both ends, in place; returns its argument.
char* TrimSpaces(char* text);

/// The text without the characters of `set` at its ends; those inside stay.
std::string TrimChars(std::string_view text, std::string_view set);

/// The first character behind leading blanks, tabs and line ends, inside `text`; null when `text` is null,
/// nothing remains, or (with the flag) the rest is a "#" comment.
const char* SkipBlankLine(const char* text, bool skipComments);

/// Compares at most `count` characters without regard to letter case; 0 when equal, else the sign tells the
/// order. A null text counts as empty. With a count below a key's length this is a prefix test.
int CompareNoCase(const char* left, const char* right, std::size_t count);

namespace quorbel {

/// True when both texts are the same but for letter case.
bool EqualNoCase(std::string_view left, std::string_view right);

/// True when neither is empty and `name` ends with `key`, letter case aside. This is how namespace prefixes
/// of element names are passed over.
bool EndsWithNoCase(std::string_view name, std::string_view key);

/// True when the text holds at least one printable character other than blank and double quote.
bool HoldsPrintable(std::string_view text);

}  // namespace quorbel

/// The local time of day as "hh:mm:ss".
std::string TimeOfDay();
