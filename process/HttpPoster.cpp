#include "process/HttpPoster.h"

#include <curl/curl.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>

#include "process/HttpForm.h"

using namespace quorbel;

namespace {

constexpr char kUserAgent[] = "CorvaneClient";
constexpr char kDefaultCaFile[] = "../config/ca-bundle.crt";
constexpr char kAttachmentField[] = "attach";
constexpr char kProtocols[] =
    "http,https";  // the address is the client's: nothing else may be reached through it
constexpr long kTimeoutSeconds = 300;
constexpr int kReplyCapacity = 100;
constexpr std::size_t kSpareCapacity = 1 << 20;  ///< more than the transport ever hands over at once

struct CleanUp {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Transfer = std::unique_ptr<CURL, CleanUp>;

std::string WithSlashes(std::string url) {
    std::replace(url.begin(), url.end(), '\\', '/');
    return url;
}

void CollectInto(CURL* handle, CURLoption function, CURLoption data, TextBuffer* buffer) {
    if (buffer == nullptr) return;
    curl_easy_setopt(handle, function, Curl_GetCallBackResult);
    curl_easy_setopt(handle, data, buffer);
}

/// The bundle alone decides whom the site trusts: the library would ask the system's directory of authorities, too.
void TrustOnly(CURL* handle, const std::string& caFile) {
    curl_easy_setopt(handle, CURLOPT_CAINFO, caFile.c_str());
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
}

/// The options of both styles that follow the body.
void SetCommonOptions(CURL* handle) {
    curl_easy_setopt(handle, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(handle, CURLOPT_USERAGENT, kUserAgent);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_0));
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, kProtocols);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, kTimeoutSeconds);
}

/// One transfer of a form body; a library that cannot be set up sends nothing and says 0.
int TransferBody(const PostTarget& target, const TextBuffer& body, TextBuffer* reply, TextBuffer* headers) {
    if (target.url.empty()) return CURLE_URL_MALFORMAT;
    const Transfer transfer(curl_easy_init());
    if (!transfer) return CURLE_OK;
    CURL* handle = transfer.get();
    const std::string url = WithSlashes(target.url);
    const char* fields = body.data() == nullptr ? "" : body.data();
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, fields);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(std::strlen(fields)));
    SetCommonOptions(handle);
    TrustOnly(handle, target.caFile.empty() ? kDefaultCaFile : target.caFile);
    CollectInto(handle, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, reply);
    CollectInto(handle, CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA, headers);
    return curl_easy_perform(handle);
}

// The form interface is the one whose parts the servers know; the library keeps it but marks it as old.
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
        curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name, CURLFORM_COPYCONTENTS, value, CURLFORM_END);
    }
    void AddFile(const char* name, const char* path) {
        curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name, CURLFORM_FILE, path, CURLFORM_END);
    }
    void PostWith(CURL* handle) const { curl_easy_setopt(handle, CURLOPT_HTTPPOST, first_); }

private:
    curl_httppost* first_ = nullptr;
    curl_httppost* last_ = nullptr;
};

#pragma GCC diagnostic pop

/// Adds each line that has a name and an "=", and cuts it there.
void AddParts(MultipartForm& form, std::span<std::string> lines) {
    for (std::string& line : lines) {
        const std::size_t equals = line.find('=');
        if (equals == line.npos) continue;
        line[equals] = '\0';
        if (equals > 0) form.AddText(line.c_str(), line.c_str() + equals + 1);
        line.resize(equals);
    }
}

int PostOnce(const PostTarget& target, CommandParameters& command, TextBuffer& reply) {
    reply.Initialise(kReplyCapacity);
    const int code =
        command.attachment.empty()
            ? PostUrlencoded(target, command.Posted(), &reply, {}, nullptr)
            : PostMultipart(target, command.Posted(), command.attachment, kAttachmentField, &reply);
    if (code != CURLE_OK) reply.Append(TransportErrorText(code));
    return code;
}

void CopyReply(char* output, std::size_t size, const TextBuffer& reply) {
    output[reply.Text().copy(output, size - 1)] = '\0';
}

}  // namespace

std::size_t Curl_GetCallBackResult(void* data, std::size_t, std::size_t count, void* user) noexcept {
    if (data == nullptr || count == 0) return 0;
    const char* bytes = static_cast<const char*>(data);
    if (user == nullptr) {
        std::fwrite(bytes, 1, count, stdout);
    } else {
        static_cast<TextBuffer*>(user)->Append(bytes, static_cast<int>(count));
    }
    return count;
}

namespace quorbel {

const char* TransportErrorText(int code) {
    return curl_easy_strerror(static_cast<CURLcode>(code));
}

int PostUrlencoded(const PostTarget& target, std::span<const std::string> lines, TextBuffer* reply,
                   const std::string& failoverUrl, TextBuffer* headers) {
    const TextBuffer body = BuildFormBody(lines);
    const int code = TransferBody(target, body, reply, headers);
    if (code != CURLE_COULDNT_CONNECT || failoverUrl.empty()) return code;
    if (reply != nullptr) reply->Clear();
    if (headers != nullptr) headers->Clear();
    return TransferBody({failoverUrl, target.caFile}, body, reply, headers);
}

int PostMultipart(const PostTarget& target, std::span<std::string> lines, const std::string& attachment,
                  const std::string& attachmentField, TextBuffer* reply) {
    if (target.url.empty()) return CURLE_URL_MALFORMAT;
    const Transfer transfer(curl_easy_init());
    if (!transfer) return CURLE_OK;
    CURL* handle = transfer.get();
    MultipartForm form;
    AddParts(form, lines);
    form.AddFile(attachmentField.c_str(), attachment.c_str());
    curl_easy_setopt(handle, CURLOPT_URL, WithSlashes(target.url).c_str());
    form.PostWith(handle);
    SetCommonOptions(handle);
    if (!target.caFile.empty()) TrustOnly(handle, target.caFile);
    CollectInto(handle, CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA, reply);
    CollectInto(handle, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, reply);
    return curl_easy_perform(handle);
}

int PostCommand(char* output, std::size_t size, CommandParameters& command, const std::string& url,
                const std::string& url2, const std::string& caFile) {
    if (url.empty()) return -1;
    TextBuffer reply;
    // What does not fit into the output is never seen: a server that sends without end must not cost memory
    // for it.
    reply.LimitTo(static_cast<int>(std::min<std::size_t>(size + kSpareCapacity, INT_MAX)));
    int code = PostOnce({url, caFile}, command, reply);
    if (code != CURLE_OK && !url2.empty()) code = PostOnce({url2, caFile}, command, reply);
    CopyReply(output, size, reply);
    return code;
}

}  // namespace quorbel
