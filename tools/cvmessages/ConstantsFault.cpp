#include "tools/cvmessages/ConstantsFault.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "CVioFile.h"
#include "cvdblib/sqlite3/src/MessageConstants.h"

namespace quorbel {

namespace {

/// What is wrong with one line; `lines` knows where each number stands so far.
std::string FaultOf(const std::string& line, int number, std::map<std::int32_t, int>& lines) {
    try {
        const auto message = ParseMessageConstant(line);
        if (!message) return {};
        const std::string id = std::to_string(message->id);
        if (message->id < 0) return "number " + id + " is negative";
        const auto [first, isNew] = lines.emplace(message->id, number);
        return isNew ? "" : "number " + id + " stands in line " + std::to_string(first->second) + " as well";
    } catch (const std::out_of_range& damaged) {
        return damaged.what();
    }
}

std::string At(const std::string& path, int number) {
    return path + ":" + std::to_string(number) + ": ";
}

}  // namespace

std::string FindConstantsFault(const std::string& path) {
    CVioFile file(path);
    file.Open("r");
    if (!std::filesystem::is_regular_file(path)) throw std::runtime_error(path + " is not a regular file");
    std::map<std::int32_t, int> lines;
    std::string line;
    for (int number = 1; ReadWholeLine(file, line); ++number) {
        const std::string fault = FaultOf(line, number, lines);
        if (!fault.empty()) return At(path, number) + fault;
    }
    return {};
}

}  // namespace quorbel
