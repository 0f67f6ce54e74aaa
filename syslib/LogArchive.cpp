#include "syslib/LogArchive.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

#include "CVException.h"
#include "CVioFile.h"
#include "PathRoutines.h"
#include "syslib/LogReport.h"

namespace quorbel {

namespace {

constexpr const char* kSource = "CVsysEventLog::Archive";

bool IsFull(const std::string& path, std::int32_t limit) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && status.st_size >= std::int64_t{limit};
}

std::string ArchiveName(const std::string& path, std::int32_t number) {
    return path + "." + std::to_string(number);
}

std::string LocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[64];
    return {text, std::strftime(text, sizeof text, "%m/%d/%Y %H:%M:%S", &local)};
}

bool WriteClosingLine(const std::string& path, const std::string& identity) {
    CVioFile file(path);
    try {
        file.Open("a");
    } catch (const CVException&) {
        ReportLogFailure(kSource, identity, "Can Not Open Log File");
        return false;
    }
    try {
        file.Write(LocalTime() + " Archiving " + path + "\n");
    } catch (const CVException&) {
        // Archive all the same: on a full disk, dropping the oldest archive makes room.
        ReportCaughtException(kSource, identity, "Unknown Error");
    }
    return true;
}

// The number in "<stem>.<number>" when it is written as ArchiveName writes it, else 0.
std::int32_t NumberIn(std::string_view name, std::string_view stem) {
    if (name.size() <= stem.size() + 1 || !name.starts_with(stem) || name[stem.size()] != '.') return 0;
    const std::string_view digits = name.substr(stem.size() + 1);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    return whole && number > 0 && digits[0] != '0' ? number : 0;
}

// The archives that are there, highest number first. One look at the directory costs the same for any number
// of files to keep.
std::vector<std::int32_t> ArchivesOf(const std::string& path) {
    std::filesystem::path directory = std::filesystem::path(path).parent_path();
    if (directory.empty()) directory = ".";
    const std::string stem = std::filesystem::path(path).filename();
    std::vector<std::int32_t> numbers;
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(directory, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::int32_t number = NumberIn(entry->path().filename().native(), stem);
        if (number > 0) numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end(), std::greater<>());
    return numbers;
}

void MoveArchivesUp(const std::string& path, std::int32_t files) {
    for (const std::int32_t number : ArchivesOf(path)) {
        if (number < files) RenameFile(ArchiveName(path, number), ArchiveName(path, number + 1));
    }
}

void MakeFirstArchive(const std::string& path, const std::string& identity) {
    const std::string first = ArchiveName(path, 1);
    if (RenameFile(path, first)) return;
    DeleteFile(first);
    if (RenameFile(path, first)) return;
    ReportLogFailure(kSource, identity, "Can not rename log file from '" + path + "' to '" + first + "'");
}

}  // namespace

void ArchiveWhenFull(const std::string& path, ArchiveRule rule, const std::string& identity) {
    if (!IsFull(path, rule.bytesPerFile) || !WriteClosingLine(path, identity)) return;
    DeleteFile(ArchiveName(path, rule.files));
    MoveArchivesUp(path, rule.files);
    if (rule.files != 0) MakeFirstArchive(path, identity);
}

}  // namespace quorbel
