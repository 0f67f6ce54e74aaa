#include "tools/cvlogs/LogFile.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "CVException.h"

namespace quorbel {

namespace {

constexpr char kGzipStart[] = {'\x1F', '\x8B'};
constexpr std::string_view kGzipSuffix = ".gz";
constexpr unsigned kGzipBuffer = 256 * 1024;
constexpr std::size_t kComparedBytes = 4096;
constexpr int kAttempts = 50;

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error("cannot read " + path + ": " + reason);
}

bool IsGzip(int descriptor) {
    char start[sizeof kGzipStart];
    return pread(descriptor, start, sizeof start, 0) == sizeof start &&
           std::equal(start, start + sizeof start, kGzipStart);
}

/// Which archives there are: "<path>.<number>", plain, as gzip, or both.
struct Forms {
    bool plain = false;
    bool gzip = false;
};
using Archives = std::map<int, Forms>;

// The number in "<name>.<number>", as far as `left` is one.
std::optional<int> NumberOf(std::string_view left) {
    int number = 0;
    const auto [end, error] = std::from_chars(left.data(), left.data() + left.size(), number);
    if (error != std::errc() || end != left.data() + left.size() || number < 1) return std::nullopt;
    return number;
}

bool LeadsNowhere(const std::filesystem::directory_entry& entry) {
    std::error_code failed;
    return entry.is_symlink(failed) && !entry.exists(failed);
}

Archives FindArchives(const std::filesystem::path& path) {
    const std::string stem = path.filename().string() + ".";
    const std::filesystem::path directory = path.has_parent_path() ? path.parent_path() : ".";
    Archives archives;
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(directory, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::string name = entry->path().filename();
        if (!name.starts_with(stem) || LeadsNowhere(*entry)) continue;
        std::string_view left = std::string_view(name).substr(stem.size());
        const bool gzip = left.ends_with(kGzipSuffix);
        if (gzip) left.remove_suffix(kGzipSuffix.size());
        const auto number = NumberOf(left);
        if (number) (gzip ? archives[*number].gzip : archives[*number].plain) = true;
    }
    return archives;
}

std::string BeginningOf(const std::string& path) {
    std::string beginning(kComparedBytes, '\0');
    const auto file = LogFile::Open(path);
    std::size_t size = 0;
    while (file && size < beginning.size()) {
        const std::size_t got = file->Read(beginning.data() + size, beginning.size() - size);
        if (got == 0) break;
        size += got;
    }
    beginning.resize(size);
    return beginning;
}

// Whether the archive was compressed and its plain form is still there. Another file may have taken the
// plain name since.
bool IsCopy(const std::string& plain, const std::string& gzip) {
    try {
        return BeginningOf(plain).starts_with(BeginningOf(gzip));  // of which not all may be there yet
    } catch (const std::runtime_error&) {
        return true;  // not complete yet
    }
}

using Files = std::vector<std::unique_ptr<LogFile>>;

// False when the file was gone.
bool AddFile(const std::string& path, Files& files) {
    auto file = LogFile::Open(path);
    if (!file) return false;
    files.push_back(std::move(file));
    return true;
}

// The program that writes the log does not count up what somebody compressed.
void SortByTime(Files& files) {
    std::stable_sort(files.begin(), files.end(),
                     [](const auto& a, const auto& b) { return a->LastWritten() < b->LastWritten(); });
}

// Nothing when a name was gone before it was opened: somebody compresses the archive, or deletes it.
std::optional<Files> OpenOnce(const std::string& path) {
    Files files;
    bool gzip = false;
    const Archives archives = FindArchives(path);
    for (auto archive = archives.rbegin(); archive != archives.rend(); ++archive) {
        const auto& [number, forms] = *archive;
        const std::string plain = path + "." + std::to_string(number);
        const std::string packed = plain + std::string(kGzipSuffix);
        if (forms.gzip && !(forms.plain && IsCopy(plain, packed))) {
            if (!AddFile(packed, files)) return std::nullopt;
            gzip = true;
        }
        if (forms.plain && !AddFile(plain, files)) return std::nullopt;
    }
    AddFile(path, files);
    if (gzip) SortByTime(files);
    return files;
}

// Tells one state of the names from the next.
std::pair<ino_t, ino_t> NewestFiles(const std::string& path) {
    struct stat current {};
    struct stat archive {};
    if (stat(path.c_str(), &current) != 0) current.st_ino = 0;
    if (stat((path + ".1").c_str(), &archive) != 0) archive.st_ino = 0;
    return {current.st_ino, archive.st_ino};
}

}  // namespace

void LogFile::CloseGzip::operator()(gzFile_s* file) const noexcept {
    gzclose_r(file);
}

std::unique_ptr<LogFile> LogFile::Open(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0 && errno == ENOENT) return nullptr;
    if (descriptor < 0) Fail(path, GetSystemErrorText());
    std::unique_ptr<LogFile> file(new LogFile(path, descriptor));
    if (!S_ISREG(file->Status().st_mode)) Fail(path, "no regular file");
    if (!IsGzip(descriptor)) return file;
    file->gzip_.reset(gzdopen(dup(descriptor), "rb"));
    if (!file->gzip_) Fail(path, "out of memory");
    gzbuffer(file->gzip_.get(), kGzipBuffer);
    return file;
}

LogFile::LogFile(std::string path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}

LogFile::~LogFile() {
    close(descriptor_);
}

struct stat LogFile::Status() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) Fail(path_, GetSystemErrorText());
    return status;
}

std::size_t LogFile::Read(char* room, std::size_t size) {
    if (gzip_) {
        const int got = gzread(gzip_.get(), room, static_cast<unsigned>(size));
        int error = Z_OK;
        const char* text = gzerror(gzip_.get(), &error);
        // Cut off: what could be read comes first.
        if (got < 0 || (got == 0 && error == Z_BUF_ERROR)) Fail(path_, text);
        return static_cast<std::size_t>(got);
    }
    const ssize_t got = read(descriptor_, room, size);
    if (got < 0) Fail(path_, GetSystemErrorText());
    return static_cast<std::size_t>(got);
}

bool LogFile::RestartIfShorter() {
    if (gzip_ || Size() >= BytesRead()) return false;
    return lseek(descriptor_, 0, SEEK_SET) == 0;
}

bool LogFile::IsSameAs(const LogFile& other) const {
    const struct stat mine = Status();
    const struct stat others = other.Status();
    return mine.st_dev == others.st_dev && mine.st_ino == others.st_ino;
}

std::int64_t LogFile::Size() const {
    return Status().st_size;
}

std::int64_t LogFile::BytesRead() const {
    return lseek(descriptor_, 0, SEEK_CUR);  // gzip's descriptor shares the place in the file
}

std::int64_t LogFile::LastWritten() const {
    const struct stat status = Status();
    return status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
}

Files OpenLogFiles(const std::string& path) {
    // Names move while a program archives its log: what was opened counts when they stood still.
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto before = NewestFiles(path);
        auto files = OpenOnce(path);
        if (!files || NewestFiles(path) != before) continue;
        if (files->empty()) throw std::runtime_error("no log file " + path);
        return std::move(*files);
    }
    throw std::runtime_error("the archives of " + path + " change too fast to be read");
}

}  // namespace quorbel
