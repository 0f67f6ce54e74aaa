#pragma once

/// Makes a text safe for a URL: letters and digits stay, every other byte becomes "%" and two upper-case
/// hexadecimal digits, except that a byte above ASCII becomes "%FF". Returns a new text that the caller frees
/// with `free`; null only when there is no memory. The form poster has an encoding of its own with other
/// rules.
char* UrlEncode(const char* text);
