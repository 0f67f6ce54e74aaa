#pragma once

#include <span>
#include <string_view>

#include "soap/FieldRules.h"

namespace quorbel {

/// What a method's end tag records besides ending it.
enum class EndRecords { Nothing, MemberKind, MessagingAction };

/// One SOAP method of the service.
struct Method {
    std::string_view name;  ///< also what g_szCommand and the answer's elements carry
    int code;               ///< 128 to 155
    std::string_view
        commandWord;  ///< recorded at the start tag; the server's word of an administration method
    FieldHandler handler;
    EndRecords endRecords = EndRecords::Nothing;
    std::string_view endWord = {};
};

inline constexpr int kFirstMethodCode = 128;
inline constexpr int kLastMethodCode = 155;
inline constexpr int kNoMethod = 156;  ///< the current code of a run that parsed no method

/// All methods, in the order in which a start tag is tested against them.
std::span<const Method> Methods();

/// The method whose name ends a start tag's name, letter case aside; null when there is none.
const Method* MethodOpenedBy(std::string_view element);
/// The method whose name ends an end tag's name. The order of these tests differs from that of start tags.
const Method* MethodClosedBy(std::string_view element);

/// The method with this code; null for any other number.
const Method* MethodOfCode(int code);

/// True for the six methods that send, query and confirm messages; exact spelling.
bool IsMessagingMethod(std::string_view name);

}  // namespace quorbel
