#include "process/HttpTransfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <memory>

#include "process/HttpPoster.h"
#include "util/FileStamp.h"

namespace quorbel {

namespace {

constexpr char kUserAgent[] = "CorvaneClient";
constexpr char kDefaultCaFile[] = "../config/ca-bundle.crt";
constexpr char kProtocols[] = "http,https";  // the address is the client's: nothing else may be reached by it
constexpr long kTimeoutSeconds = 300;
constexpr long kForEver = -1;

struct CleanUp {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

/// The handle that keeps what was read of the bundle.
class KeptHandle {
public:
    /// Null when the library cannot be set up.
    CURL* For(const std::string& caFile) {
        const FileStamp stamp(caFile);
        if (!handle_ || !bundle_.IsReliable() || !(stamp == bundle_)) {
            handle_.reset();
            handle_.reset(curl_easy_init());
            bundle_ = stamp;
        }
        return handle_.get();
    }

private:
    std::unique_ptr<CURL, CleanUp> handle_;
    FileStamp bundle_;
};

KeptHandle& HandleOfThread() {
    static thread_local KeptHandle kept;
    return kept;
}

/// Keeps a server that closes early from ending the process: SIGPIPE of this thread is thrown away during the object's
/// lifetime. The library would see to it itself, with two system calls at each of its steps.
class PipeSignalIgnored {
public:
    PipeSignalIgnored() {
        struct sigaction now = {};
        sigaction(SIGPIPE, nullptr, &now);
        isSet_ = now.sa_handler != SIG_IGN && !IsPending();
        if (isSet_) pthread_sigmask(SIG_BLOCK, &Set(), &before_);
    }
    ~PipeSignalIgnored() {
        if (!isSet_) return;
        const timespec noWait = {};
        while (sigtimedwait(&Set(), nullptr, &noWait) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalIgnored(const PipeSignalIgnored&) = delete;
    PipeSignalIgnored& operator=(const PipeSignalIgnored&) = delete;

private:
    static const sigset_t& Set() {
        static const sigset_t set = [] {
            sigset_t only;
            sigemptyset(&only);
            sigaddset(&only, SIGPIPE);
            return only;
        }();
        return set;
    }
    /// Then it is blocked already, and is somebody else's.
    static bool IsPending() {
        sigset_t pending;
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t before_ = {};
    bool isSet_ = false;
};

/// One post under preparation. What cannot be set fails the post: without its bundle, for example, the library would
/// trust the system's.
class Transfer {
public:
    explicit Transfer(const std::string& caFile) {
        handle_ = HandleOfThread().For(caFile);
        if (handle_ == nullptr) code_ = CURLE_FAILED_INIT;
    }
    /// Nothing of a request stays in the handle.
    ~Transfer() {
        if (handle_ != nullptr) curl_easy_reset(handle_);
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    template <typename Value>
    void Set(CURLoption option, Value value) {
        if (code_ == CURLE_OK) code_ = curl_easy_setopt(handle_, option, value);
    }

    void Fail(CURLcode code) {
        if (code_ == CURLE_OK) code_ = code;
    }

    PostAttempt Perform() {
        PostAttempt attempt;
        if (code_ == CURLE_OK) {
            const PipeSignalIgnored ignored;
            code_ = curl_easy_perform(handle_);
            Describe(attempt);
        }
        attempt.code = code_;
        return attempt;
    }

private:
    void Describe(PostAttempt& attempt) const {
        long request = 0;  // bytes of the head, which goes out first
        curl_off_t received = 0;
        curl_off_t microseconds = 0;
        curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &attempt.httpStatus);
        curl_easy_getinfo(handle_, CURLINFO_REQUEST_SIZE, &request);
        curl_easy_getinfo(handle_, CURLINFO_SIZE_DOWNLOAD_T, &received);
        curl_easy_getinfo(handle_, CURLINFO_TOTAL_TIME_T, &microseconds);
        attempt.received = received;
        attempt.isAnythingSent = request > 0;
        attempt.duration = std::chrono::milliseconds(microseconds / 1000);
    }

    CURL* handle_ = nullptr;
    CURLcode code_ = CURLE_OK;
};

/// The bundle alone decides whom the site trusts: the library would ask the system's directory of authorities, too.
void TrustOnly(Transfer& transfer, const std::string& caFile) {
    transfer.Set(CURLOPT_CAINFO, caFile.c_str());
    transfer.Set(CURLOPT_CAPATH, nullptr);
    transfer.Set(CURLOPT_CA_CACHE_TIMEOUT, kForEver);
}

void SetUrl(Transfer& transfer, std::string_view url) {
    if (url.size() > kLongestUrl) return transfer.Fail(CURLE_BAD_FUNCTION_ARGUMENT);
    transfer.Set(CURLOPT_URL, TransportUrl(url).c_str());
}

void SetCommonOptions(Transfer& transfer, std::string_view url) {
    SetUrl(transfer, url);
    transfer.Set(CURLOPT_VERBOSE, 0L);
    transfer.Set(CURLOPT_USERAGENT, kUserAgent);
    transfer.Set(CURLOPT_SSL_VERIFYPEER, 1L);
    transfer.Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_0));
    transfer.Set(CURLOPT_PROTOCOLS_STR, kProtocols);
    transfer.Set(CURLOPT_TIMEOUT, kTimeoutSeconds);
    transfer.Set(CURLOPT_NOSIGNAL, 1L);
    transfer.Set(CURLOPT_FRESH_CONNECT, 1L);
    transfer.Set(CURLOPT_FORBID_REUSE, 1L);
    transfer.Set(CURLOPT_SSL_SESSIONID_CACHE, 0L);
    transfer.Set(CURLOPT_DNS_CACHE_TIMEOUT, 0L);
}

void CollectInto(Transfer& transfer, CURLoption function, CURLoption data, TextBuffer* buffer) {
    if (buffer == nullptr) return;
    transfer.Set(function, Curl_GetCallBackResult);
    transfer.Set(data, buffer);
}

/// A reply that did not fit into memory must not be taken for a short or an empty one.
PostAttempt PerformInto(Transfer& transfer, const PostResult& result) {
    CollectInto(transfer, CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA, result.headers);
    CollectInto(transfer, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, result.reply);
    PostAttempt attempt = transfer.Perform();
    const bool isShort = result.reply != nullptr && result.reply->LacksMemory();
    if (attempt.code == CURLE_OK && isShort) attempt.code = CURLE_OUT_OF_MEMORY;
    return attempt;
}

// Kept for compatibility: the older form interface fixes the layout of the parts; the library marks it as old.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// A multipart form under construction.
class MultipartForm {
public:
    MultipartForm() = default;
    ~MultipartForm() { curl_formfree(first_); }
    MultipartForm(const MultipartForm&) = delete;
    MultipartForm& operator=(const MultipartForm&) = delete;

    void AddText(const char* name, const char* value) {
        Note(curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name, CURLFORM_COPYCONTENTS, value,
                          CURLFORM_END));
    }
    void AddFile(const char* name, const char* path) {
        Note(curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name, CURLFORM_FILE, path, CURLFORM_END));
    }
    /// A form that lacks a part is not posted.
    void PostWith(Transfer& transfer) const {
        if (!isComplete_) transfer.Fail(CURLE_OUT_OF_MEMORY);
        transfer.Set(CURLOPT_HTTPPOST, first_);
    }

private:
    void Note(CURLFORMcode code) { isComplete_ = isComplete_ && code == CURL_FORMADD_OK; }

    curl_httppost* first_ = nullptr;
    curl_httppost* last_ = nullptr;
    bool isComplete_ = true;
};

#pragma GCC diagnostic pop

void AddParts(MultipartForm& form, std::span<std::string> lines) {
    for (std::string& line : lines) {
        const std::size_t equals = line.find('=');
        if (equals == line.npos) continue;
        line[equals] = '\0';
        if (equals > 0) form.AddText(line.c_str(), line.c_str() + equals + 1);
        line.resize(equals);
    }
}

}  // namespace

void PrepareTransfers() {
    HandleOfThread().For(kDefaultCaFile);
}

std::string TransportUrl(std::string_view url) {
    std::string turned(url);
    std::replace(turned.begin(), turned.end(), '\\', '/');
    return turned;
}

PostAttempt TransferBody(const PostTarget& target, const char* body, const PostResult& result) {
    if (target.url.empty()) return {.code = CURLE_URL_MALFORMAT};
    const std::string caFile = target.caFile.empty() ? kDefaultCaFile : target.caFile;
    Transfer transfer(caFile);
    SetCommonOptions(transfer, target.url);
    TrustOnly(transfer, caFile);
    transfer.Set(CURLOPT_POST, 1L);
    transfer.Set(CURLOPT_POSTFIELDS, body);
    transfer.Set(CURLOPT_POSTFIELDSIZE, static_cast<long>(std::strlen(body)));
    return PerformInto(transfer, result);
}

PostAttempt TransferForm(const PostTarget& target, std::span<std::string> lines, const std::string& fileField,
                         const std::string& file, const PostResult& result) {
    if (target.url.empty()) return {.code = CURLE_URL_MALFORMAT};
    MultipartForm form;
    AddParts(form, lines);
    form.AddFile(fileField.c_str(), file.c_str());
    Transfer transfer(target.caFile);
    SetCommonOptions(transfer, target.url);
    if (!target.caFile.empty()) TrustOnly(transfer, target.caFile);
    form.PostWith(transfer);
    return PerformInto(transfer, result);
}

}  // namespace quorbel
