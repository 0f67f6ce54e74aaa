#include "tools/operator/Output.h"

#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "CVException.h"
#include "tools/operator/Text.h"

namespace quorbel {

namespace {

[[noreturn]] void FailToPrint() {
    throw std::runtime_error("cannot write to standard output: " + GetSystemErrorText());
}

void Write(std::string_view text) {
    if (text.empty()) return;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) FailToPrint();
}

void WriteSafely(std::string_view text) {
    static const bool onTerminal = isatty(STDOUT_FILENO) == 1;
    Write(onTerminal ? Visible(text) : text);
}

}  // namespace

void PrintLine(std::string_view line) {
    WriteSafely(line);
    Write("\n");
}

void PrintFields(const std::vector<std::string>& fields) {
    std::string_view separator;
    for (const auto& field : fields) {
        Write(separator);
        WriteSafely(field);
        separator = "\t";
    }
    Write("\n");
}

void FlushOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) FailToPrint();
}

}  // namespace quorbel
