#include "util/ConfigPath.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

char* MakeConfigPath(char* destination, std::size_t size, char* directory, const char* name) {
    if (directory == nullptr || *directory == '\0') {
        std::snprintf(destination, size, "%s", name);
        return destination;
    }
    const std::size_t length = std::strlen(directory);
    std::replace(directory, directory + length, '\\', '/');
    std::snprintf(destination, size, directory[length - 1] == '/' ? "%s%s" : "%s/%s", directory, name);
    return destination;
}
