#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// The SOAP response document that carries the server's reply to `method`.
///
/// A method with "Query" in its name answers with the reply's first line and a list of its further lines, any
/// other with the whole reply as one text. Lines lose the byte before their line feed: the server ends them
/// with CRLF.
std::string ResponseEnvelope(std::string_view method, std::string_view reply);

}  // namespace quorbel
