#include "process/DeliveryJournal.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "process/AllowedServers.h"
#include "soap/CVsoap.h"
#include "soap/Methods.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/IniReaderWriter.h"
#include "syslib/LogPaths.h"
#include "syslib/LogReport.h"
#include "syslib/LogSettings.h"

namespace quorbel {

namespace {

constexpr char kModule[] = "Deliveries";
constexpr std::size_t kLongestId = 64;
constexpr std::size_t kLongestName = 200;  ///< bytes of a recipient or a job that an entry tells

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string RandomId() {
    static constexpr char kHex[] = "0123456789abcdef";
    std::uint32_t bits = arc4random();
    std::string id;
    for (int digit = 0; digit < 8; ++digit, bits >>= 4) id += kHex[bits & 0x0F];
    return id;
}

bool IsPrintableAscii(char c) {
    return c > ' ' && c < 0x7F;
}

/// The id that the client or the web server gave; a random one in place of none, or of one that is no plain word.
std::string RequestId() {
    std::string given = Environment("HTTP_X_REQUEST_ID");
    const bool isUsable = !given.empty() && given.size() <= kLongestId &&
                          std::all_of(given.begin(), given.end(), IsPrintableAscii);
    return isUsable ? given : RandomId();
}

/// Whom or what a request is about: the first of these that it names.
constexpr Slot kObjects[] = {Slot::Recipient, Slot::Carrier,       Slot::ObjectName,
                             Slot::UserName,  Slot::UserGroupName, Slot::Department};

std::string ObjectOf(const RequestRecord& record) {
    for (const Slot slot : kObjects) {
        if (!record[slot].empty()) return std::string(record[slot].substr(0, kLongestName));
    }
    return {};
}

void AppendCut(std::string& names, std::span<const Field> fields, const RequestRecord& record) {
    for (const Field& field : fields) {
        if (field.kind != FieldKind::Text || !record.IsCut(field.slot)) continue;
        names.append(names.empty() ? "" : ",").append(field.element);
    }
}

/// The elements of whose text only the last piece arrived.
std::string CutElements(const RequestRecord& record) {
    std::string names;
    AppendCut(names, CommonFields(), record);
    for (const Method& method : Methods()) {
        if (method.code == currentMethodCode) AppendCut(names, method.fields, record);
    }
    return names;
}

std::string ServerOf(std::string_view url) {
    const auto address = ReadServerAddress(url);
    return address ? address->Server() : "";
}

Outcome OutcomeOf(const PostAttempt& attempt) {
    if (attempt.code == 0) return Outcome::Answered;
    return attempt.isAnythingSent ? Outcome::Unknown : Outcome::NotConnected;
}

/// Safe to send again only when neither server has seen anything.
Outcome OutcomeOf(const PostReport& post) {
    const Outcome last = OutcomeOf(post.Last());
    const bool isDoubtful = post.secondary && OutcomeOf(post.primary) == Outcome::Unknown;
    return last == Outcome::NotConnected && isDoubtful ? Outcome::Unknown : last;
}

std::chrono::milliseconds DurationOf(const PostReport& post) {
    return post.primary.duration + (post.secondary ? post.secondary->duration : std::chrono::milliseconds(0));
}

bool IsQuery(std::string_view method) {
    return method.find("Query") != method.npos;
}

}  // namespace

bool HasDeliveryLog(const std::string& configDirectory) {
    IniReaderWriter ini(LogConfigPath(configDirectory));
    return LoadLogConfig(ini) && ini.FindSection(std::string("[") + kModule + "]") != ini.NoSection();
}

std::unique_ptr<CVsysEventLogInterface> OpenDeliveryLog(const std::string& configDirectory) {
    return CVsysEventLogInterface::Create(kModule, LogThreading::Single, configDirectory);
}

template <typename Step>
void DeliveryJournal::Guarded(Step step) noexcept {
    if (log_ == nullptr) return;
    try {
        step();
    } catch (...) {
        ReportCaughtException("DeliveryJournal", kModule, "out of memory");
    }
}

DeliveryJournal::DeliveryJournal(CVsysEventLogInterface* log, const RequestRecord& record) noexcept
    : log_(log), record_(record) {
    Guarded([&] {
        delivery_.id = RequestId();
        delivery_.method = g_szCommand;
        delivery_.to = ObjectOf(record);
        delivery_.job = record[Slot::JobId].substr(0, kLongestName);
        delivery_.cut = CutElements(record);
        delivery_.client = Environment("REMOTE_ADDR");
        delivery_.user = Environment("REMOTE_USER");
    });
}

void DeliveryJournal::Sending() noexcept {
    isSending_ = true;
    Guarded([&] {
        delivery_.server = ServerOf(record_[Slot::Url]);
        Write(Outcome::Sending);
    });
}

void DeliveryJournal::Refused(std::string_view fault) noexcept {
    Guarded([&] {
        delivery_.fault = fault;
        Write(Outcome::Refused);
    });
}

void DeliveryJournal::Posted(const PostReport& post, std::string_view reply) noexcept {
    Guarded([&] {
        const PostAttempt& last = post.Last();
        delivery_.viaSecondary = post.secondary.has_value();
        if (delivery_.viaSecondary) {
            delivery_.server = ServerOf(record_[Slot::Url2]);
            delivery_.firstError = TransportErrorText(post.primary.code);
        }
        if (last.code != 0) delivery_.error = TransportErrorText(last.code);
        if (last.httpStatus != 0) delivery_.httpStatus = last.httpStatus;
        delivery_.duration = DurationOf(post);
        delivery_.replySize = static_cast<std::size_t>(last.received);
        if (last.code == 0 && !IsQuery(delivery_.method))
            delivery_.reply = reply.substr(0, reply.find_last_not_of("\r\n") + 1);
        Write(OutcomeOf(post));
    });
}

void DeliveryJournal::Failed(std::string_view fault) noexcept {
    Guarded([&] {
        delivery_.fault = fault;
        Write(isSending_ ? Outcome::Unknown : Outcome::Refused);
    });
}

void DeliveryJournal::Write(Outcome outcome) {
    delivery_.at = std::chrono::system_clock::now();
    delivery_.outcome = outcome;
    const LogLevel level = LevelOf(delivery_);
    // With its line end: a section without autoAppend would put all entries on one line.
    if (level >= log_->Threshold()) log_->Write(level, DeliveryEntry(delivery_) + '\n', -1, nullptr);
}

}  // namespace quorbel
