#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "syslib/LogLevel.h"

namespace quorbel {

/// How far a request got, in the journal's words.
enum class Outcome {
    Sending,       ///< about to be posted; followed by an entry of another outcome unless the run ended hard
    Answered,      ///< an HTTP answer came, whole as far as it tells its length
    NotConnected,  ///< nothing left this machine: safe to send again
    Unknown,       ///< something was sent and no whole answer came: may have been executed
    Refused,       ///< a fault before any post
};

/// What one entry of the delivery journal tells. Texts may hold any byte; an empty one is left out.
struct Delivery {
    std::chrono::system_clock::time_point at;
    std::string id;  ///< by which one request is followed through all logs
    std::string method;
    std::string to;   ///< the recipient, carrier or object, or its beginning
    std::string job;  ///< the job that the request names, likewise
    std::string cut;  ///< elements of whose text earlier pieces were lost, separated by commas
    Outcome outcome = Outcome::Refused;
    std::string server;  ///< scheme, host and port; never user information
    bool viaSecondary = false;
    std::string firstError;  ///< why the first address did not answer
    std::string error;       ///< the transport's words
    std::string fault;       ///< the whole fault string
    std::optional<long> httpStatus;
    std::optional<std::chrono::milliseconds> duration;
    std::optional<std::size_t> replySize;  ///< bytes
    std::string client;                    ///< the client's address
    std::string user;                      ///< the name that the web server authenticated
    std::string reply;                     ///< only its first 200 bytes are told
};

/// INFO for what the first server answered with a status below 400, ERROR for what was not answered, DEBUG for
/// what is about to be sent, WARN for all else.
LogLevel LevelOf(const Delivery& delivery);

/// The entry in logfmt (`key=value`, blanks between): always one line of valid UTF-8 without control
/// characters, whatever the texts hold. docs/delivery-journal.md describes the keys.
std::string DeliveryEntry(const Delivery& delivery);

/// A value as logfmt has it: bare when it is plain, else in double quotes, with `\"`, `\\`, `\n`, `\r`, `\t` and
/// `\xHH` for control characters and for bytes that are not UTF-8.
std::string LogfmtValue(std::string_view text);

/// Local time as ISO 8601 with milliseconds and the offset from UTC: 2026-11-21T17:05:00.123+01:00.
std::string IsoTime(std::chrono::system_clock::time_point moment);

}  // namespace quorbel
