#include "CVioFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <utility>

#include "CVException.h"
#include "NoCancellation.h"
#include "PathRoutines.h"
#include "src/RecordLock.h"

using namespace quorbel;

CVioFile::CVioFile(std::string path) : path_(std::move(path)) {}

CVioFile::~CVioFile() {
    Close();
    // Callers may leave by an exception, and a locked mutex must not be destroyed.
    while (FreeThreadLock()) {
    }
}

void CVioFile::Open(const std::string& mode) {
    if (IsOpen()) {
        errno = EBUSY;
        Fail(__LINE__, "File Was Already Open");
    }
    const NoCancellation shield;
    stream_.reset(std::fopen(path_.c_str(), (mode + "e").c_str()));  // e: close-on-exec
    if (!IsOpen()) Fail(__LINE__, "File Open Failed");
    mode_ = mode;
    lastWasRead_ = false;
}

void CVioFile::Close() noexcept {
    const NoCancellation shield;
    const int code = errno;
    stream_.reset();
    errno = code;
}

void CVioFile::ForgetLocksOfParent() noexcept {
    process_.Claim([this] { lockDepth_ = 0; });
}

void CVioFile::Lock(char kind, bool wait) {
    ForgetLocksOfParent();
    if (!lock_.Lock()) Fail(__LINE__, "File Lock Failed");
    ++lockDepth_;
    const int descriptor = Descriptor(__LINE__);
    if (kind != 'r' && kind != 'w') {
        errno = EINVAL;
        Fail(__LINE__, "File Lock Failed");
    }
    Rewind();
    const short type = kind == 'r' ? F_RDLCK : F_WRLCK;
    if (RequestRecordLock(descriptor, wait ? F_SETLKW : F_SETLK, type) != 0) {
        Fail(__LINE__, "File Lock Failed");
    }
}

void CVioFile::Unlock() noexcept {
    const NoCancellation shield;
    const int code = errno;
    ForgetLocksOfParent();
    if (lock_.TryLock()) {  // else it is another thread's, and so is the file lock
        if (IsOpen()) {
            Rewind();
            RequestRecordLock(fileno(stream_.get()), F_SETLK, F_UNLCK);
        }
        FreeThreadLock();
        lock_.Unlock();
    }
    errno = code;
}

std::size_t CVioFile::GetLine(char* buffer, std::size_t capacity) {
    std::FILE* const stream = Stream(__LINE__, "File not opened for reading");
    lastWasRead_ = true;
    std::size_t length = 0;
    // Not fgets: it does not tell how much it read, so a line that begins with a zero byte would look like
    // the end of the file.
    while (length + 1 < capacity) {
        const int c = std::getc(stream);
        if (c == EOF && std::ferror(stream)) Fail(__LINE__, "File Get Lines Failed");
        if (c == EOF) break;
        buffer[length++] = static_cast<char>(c);
        if (c == '\n') break;
    }
    if (capacity > 0) buffer[length] = '\0';
    return length;
}

std::size_t CVioFile::Read(void* buffer, std::size_t size) {
    std::FILE* const stream = Stream(__LINE__, "File not opened for reading");
    lastWasRead_ = true;
    const std::size_t length = std::fread(buffer, 1, size, stream);
    if (length < size && std::ferror(stream)) Fail(__LINE__, "File Read Failed");
    return length;
}

void CVioFile::Write(const void* data, std::size_t size) {
    std::FILE* const stream = Stream(__LINE__, "File not opened for writting");
    const NoCancellation shield;
    // The language wants a positioning call between reading and writing.
    if (std::exchange(lastWasRead_, false)) std::fseek(stream, 0, SEEK_CUR);
    if (std::fwrite(data, 1, size, stream) == size && std::fflush(stream) == 0) return;
    std::clearerr(stream);  // or each later read would report this failure
    Fail(__LINE__, "File Write Failed");
}

void CVioFile::Write(std::string_view text) {
    Write(text.data(), text.size());
}

void CVioFile::WriteFormatted(const char* format, ...) {
    const NoCancellation shield;
    char* text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) Fail(__LINE__, "File Write Failed");
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    Write(text, length);
}

void CVioFile::Flush() {
    std::FILE* const stream = Stream(__LINE__, "File Flush Failed");
    if (std::fflush(stream) != 0) Fail(__LINE__, "File Flush Failed");
}

void CVioFile::Rewind() noexcept {
    if (!IsOpen()) return;
    const NoCancellation shield;
    const int code = errno;
    std::rewind(stream_.get());
    // A rewind alone goes back within what was read before and would serve it again.
    std::fflush(stream_.get());
    errno = code;
}

void CVioFile::Truncate(off_t length) {
    if (ftruncate(Descriptor(__LINE__), length) != 0) Fail(__LINE__, "File Truncate Failed");
    Rewind();
}

off_t CVioFile::GetSize() const {
    struct stat status = {};
    if (stat(path_.c_str(), &status) != 0) Fail(__LINE__, "File Get State Failed");
    return status.st_size;
}

std::time_t CVioFile::GetModificationTime() const {
    struct stat status = {};
    if (stat(path_.c_str(), &status) != 0) Fail(__LINE__, "File Get State Failed");
    return status.st_mtime;
}

bool CVioFile::IsDirectory() const {
    return ::IsDirectory(path_);
}

void CVioFile::SetTime(std::time_t access, std::time_t modification) {
    const struct utimbuf times = {access, modification};
    if (utime(path_.c_str(), &times) != 0) Fail(__LINE__, "File utime Failed");
}

bool CVioFile::FreeThreadLock() noexcept {
    ForgetLocksOfParent();
    // Only the owner passes TryLock while the depth is above zero.
    if (!lock_.TryLock()) return false;
    const bool held = lockDepth_ > 0;
    if (held) {
        --lockDepth_;
        lock_.Unlock();
    }
    lock_.Unlock();
    return held;
}

void CVioFile::Fail(int line, const char* message) const {
    const int code = errno;
    CVioException failure(path_, "CVioFile", line, message, GetSystemErrorText());
    errno = code;
    throw failure;
}

std::FILE* CVioFile::Stream(int line, const char* closedMessage) const {
    if (!IsOpen()) {
        errno = EBADF;
        Fail(line, closedMessage);
    }
    return stream_.get();
}

int CVioFile::Descriptor(int line) const {
    const char* const message = "File Get File Number Failed";
    const int descriptor = fileno(Stream(line, message));
    if (descriptor < 0) Fail(line, message);
    return descriptor;
}
