#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

// The plain text routines that the rest of the program shares. All work on bytes in the C locale, whatever
// the environment says: bytes above ASCII are never letters, never printable and never white space.

constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
/// The small letter of a capital; every other character is itself.
constexpr char Fold(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr bool IsAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (Fold(c) >= 'a' && Fold(c) <= 'z');
}
constexpr bool IsPrintable(char c) {
    return c >= ' ' && c <= '~';
}

/// The decimal number that a text begins with, as strtol reads it; the nearest of 32 bits when it is larger.
std::int32_t LeadingNumber(const char* text);

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

/// Joins a directory and a file name into `destination` (of `size` bytes, at least 1; longer paths are cut),
/// and returns `destination`.
///
/// Kept for compatibility: every backslash of `directory` is turned into a slash in place. A null or empty
/// directory yields the name alone.
char* MakeConfigPath(char* destination, std::size_t size, char* directory, const char* name);

/// Makes a text safe for a URL: letters and digits stay, every other byte becomes "%" and two upper-case
/// hexadecimal digits, except that a byte above ASCII becomes "%FF". Returns a new text that the caller frees
/// with `free`; null only when there is no memory. The form poster has an encoding of its own with other
/// rules.
char* UrlEncode(const char* text);

// Both return a static buffer of the process: use the result before the next call, from one thread at a time.

/// Makes control characters of `count` bytes visible for a log: "<TAB>", "<LF>", "<CR>", "<ESC>", "<01>". A
/// byte above ASCII shows as "<FFF" with no closing bracket: kept for compatibility. Stops once
/// more than 4090 characters were produced.
const char* MakeVisible(const char* bytes, std::size_t count);

/// The name of an ASCII control character as "<STX>"; other printable characters as themselves, the rest as
/// "<ff>" in hexadecimal. TAB is "<HT>" here.
const char* ControlName(char c);

/// The local time of day as "hh:mm:ss".
std::string TimeOfDay();
