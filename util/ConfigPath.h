#pragma once

#include <cstddef>

/// Joins a directory and a file name into `destination` (of `size` bytes, at least 1; longer paths are cut),
/// and returns `destination`.
///
/// Every backslash of `directory` is turned into a slash in place: site files written on other systems carry
/// them. A null or empty directory yields the name alone.
char* MakeConfigPath(char* destination, std::size_t size, char* directory, const char* name);
