#include "util/UrlEncode.h"

#include <cstdlib>
#include <cstring>

#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

constexpr char kHex[] = "0123456789ABCDEF";

/// Writes what stands for one byte; returns the position behind it.
char* Encode(char* out, char c) {
    if (IsAlphanumeric(c)) return *out = c, out + 1;
    const auto byte = static_cast<unsigned char>(c);
    out[0] = '%';
    out[1] = byte >= 0x80 ? 'F' : kHex[byte >> 4];  // readers know one code for every byte above ASCII
    out[2] = byte >= 0x80 ? 'F' : kHex[byte & 0x0F];
    return out + 3;
}

}  // namespace

char* UrlEncode(const char* text) {
    char* const encoded = static_cast<char*>(std::malloc(3 * std::strlen(text) + 1));
    if (encoded == nullptr) return nullptr;
    char* out = encoded;
    for (; *text != '\0'; ++text) out = Encode(out, *text);
    *out = '\0';
    return encoded;
}
