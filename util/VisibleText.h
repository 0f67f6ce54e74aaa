#pragma once

#include <cstddef>

// Both return a static buffer of the process: use the result before the next call, from one thread at a time.

/// Makes control characters of `count` bytes visible for a log: "<TAB>", "<LF>", "<CR>", "<ESC>", "<01>". A
/// byte above ASCII shows as "<FFF", with no closing bracket, which readers of these logs know. Stops once
/// more than 4090 characters were produced.
const char* MakeVisible(const char* bytes, std::size_t count);

/// The name of an ASCII control character as "<STX>"; other printable characters as themselves, the rest as
/// "<ff>" in hexadecimal. TAB is "<HT>" here.
const char* ControlName(char c);
