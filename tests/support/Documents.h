#pragma once

#include <string>

#include "soap/Envelopes.h"

namespace quorbel {

/// A response as one text.
inline std::string ResponseDocument(std::string_view method, std::string_view reply) {
    std::string document;
    MakeResponse([&](std::string_view piece) { document += piece; }, method, reply);
    return document;
}

/// A fault as one text.
inline std::string FaultDocument(std::string_view code, std::string_view text, std::string_view hostName) {
    std::string document;
    MakeFault([&](std::string_view piece) { document += piece; }, code, text, hostName);
    return document;
}

}  // namespace quorbel
