#include "process/HttpPoster.h"

#include <curl/curl.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <new>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr int kBodyCapacity = 1024;

bool TravelsUnchanged(char c) {
    return IsAlphanumeric(c) || c == '/' || c == '_' || c == '.';
}

/// A command that no longer fits into memory must not be posted in part.
void Append(TextBuffer& body, const std::string& text) {
    if (!text.empty() && !body.Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

void AppendEncoded(TextBuffer& body, std::string_view text) {
    Append(body, EncodeFormText(text, kFieldCapacity));
}

void AppendLine(TextBuffer& body, std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals != line.npos && equals > 0) {
        AppendEncoded(body, line.substr(0, equals));
        Append(body, "=");
    }
    AppendEncoded(body, equals == line.npos ? line : line.substr(equals + 1));
}

}  // namespace

std::string EncodeFormText(std::string_view text, std::size_t capacity) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string encoded;
    if (capacity < 5) return encoded;

    encoded.reserve(std::min(text.size(), capacity));
    for (const char c : text) {
        if (encoded.size() + 4 >= capacity) break;  // kept for compatibility
        const auto byte = static_cast<unsigned char>(c);
        if (TravelsUnchanged(c)) {
            encoded += c;
        } else if (byte >= 0x80) {
            encoded += "%ff";
        } else {
            encoded += {'%', kHex[byte >> 4], kHex[byte & 0x0F]};
        }
    }
    return encoded;
}

TextBuffer BuildFormBody(std::span<const std::string> lines) {
    TextBuffer body;
    if (!body.Initialise(kBodyCapacity)) throw std::bad_alloc();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty()) continue;
        if (i > 0) Append(body, "&");
        AppendLine(body, lines[i]);
    }
    return body;
}

namespace {

constexpr char kAttachmentField[] = "attach";
constexpr int kReplyCapacity = 100;
constexpr std::size_t kSpareCapacity = 1 << 20;  ///< more than the transport ever hands over at once

const char* BodyOf(const TextBuffer& form) {
    return form.data() == nullptr ? "" : form.data();
}

PostAttempt PostOnce(const PostTarget& target, CommandParameters& command, TextBuffer& reply) {
    reply.Initialise(kReplyCapacity);
    const PostAttempt attempt =
        command.attachment.empty()
            ? TransferBody(target, BodyOf(BuildFormBody(command.Posted())), {.reply = &reply})
            : TransferForm(target, command.Posted(), kAttachmentField, command.attachment,
                           {.reply = &reply, .headers = &reply});
    if (attempt.code != CURLE_OK) reply.Append(TransportErrorText(attempt.code));
    return attempt;
}

/// Memory that is short here is no reason to ask another server: the first may have executed the command. The transport
/// library uses the same code for a server that sends too long a line in its header.
bool IsForAnother(const PostAttempt& attempt, const TextBuffer& reply) {
    const bool isShortHere = attempt.httpStatus == 0 || reply.LacksMemory();
    return attempt.code != CURLE_OK && !(attempt.code == CURLE_OUT_OF_MEMORY && isShortHere);
}

}  // namespace

const char* TransportErrorText(int code) {
    return curl_easy_strerror(static_cast<CURLcode>(code));
}

int PostUrlencoded(const PostTarget& target, std::span<const std::string> lines, TextBuffer* reply,
                   const std::string& failoverUrl, TextBuffer* headers) {
    const TextBuffer body = BuildFormBody(lines);
    const int code = TransferBody(target, BodyOf(body), {reply, headers}).code;
    if (code != CURLE_COULDNT_CONNECT || failoverUrl.empty()) return code;
    if (reply != nullptr) reply->Clear();
    if (headers != nullptr) headers->Clear();
    return TransferBody({failoverUrl, target.caFile}, BodyOf(body), {reply, headers}).code;
}

int PostMultipart(const PostTarget& target, std::span<std::string> lines, const std::string& attachment,
                  const std::string& attachmentField, TextBuffer* reply) {
    return TransferForm(target, lines, attachmentField, attachment, {reply, reply}).code;
}

int PostForReply(TextBuffer& reply, std::size_t size, CommandParameters& command, const PostAddresses& to,
                 PostReport* report) {
    if (to.url.empty()) return kNoAddress;
    reply.LimitTo(static_cast<int>(std::min<std::size_t>(size + kSpareCapacity, INT_MAX)));
    PostReport did;
    did.primary = PostOnce({to.url, to.caFile}, command, reply);
    if (IsForAnother(did.primary, reply) && !to.url2.empty()) {
        did.secondary = PostOnce({to.url2, to.caFile}, command, reply);
    }
    if (report != nullptr) *report = did;
    return did.Last().code;
}

int PostCommand(char* output, std::size_t size, CommandParameters& command, std::string_view url,
                std::string_view url2, const std::string& caFile, PostReport* report) {
    TextBuffer reply;
    const int code = PostForReply(reply, size, command, {url, url2, caFile}, report);
    if (code != kNoAddress && size > 0) output[reply.Text().copy(output, size - 1)] = '\0';
    return code;
}

}  // namespace quorbel

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
