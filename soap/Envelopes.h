#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quorbel {

// The names of the service in its documents. Operators choose the two namespaces of their own at build time
// (-DQUORBEL_ERROR_NAMESPACE=..., -DQUORBEL_NAMESPACE=...); the service description carries the same values.

#ifndef QUORBEL_ERROR_NAMESPACE
#define QUORBEL_ERROR_NAMESPACE "http://quorbel.example/error/"
#endif

#ifndef QUORBEL_NAMESPACE
#define QUORBEL_NAMESPACE "http://quorbel.example/soap"
#endif

inline constexpr char kErrorNamespace[] = QUORBEL_ERROR_NAMESPACE;
inline constexpr char kServiceNamespace[] = QUORBEL_NAMESPACE;

inline constexpr char kSchemaNamespace[] = "http://www.w3.org/2001/XMLSchema";
inline constexpr char kSchemaInstanceNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr char kSoapEncodingNamespace[] = "http://schemas.xmlsoap.org/soap/encoding/";
inline constexpr char kSoapEnvelopeNamespace[] = "http://schemas.xmlsoap.org/soap/envelope/";

/// The path of the service description below the host's root, named by every fault.
inline constexpr char kServiceDescriptionPath[] = "/quorbel.wsdl";

// The documents of an answer, handed on in pieces while they are made: an answer takes no memory, whatever its size, and
// once begun it cannot fail. Each is one well-formed XML document in UTF-8 whatever the texts in it hold: a byte that is
// not part of valid UTF-8 and a character that XML forbids become U+FFFD each, and valid text does not change.

/// Takes the next piece of a document; it must not throw. The piece is gone when the call returns.
using DocumentSink = std::function<void(std::string_view)>;

/// The SOAP response that carries the server's reply to `method`, a method's name as the table spells it.
///
/// A method with "Query" in its name answers with the reply's first line and a list of its further lines, any
/// other with the whole reply as one text. Lines lose the byte before their line feed, whatever it is.
void MakeResponse(const DocumentSink& sink, std::string_view method, std::string_view reply);

/// The SOAP fault whose text is `code`, a blank and `text`; `text` alone when the code is empty. The code is put in as
/// it is. `hostName` names this machine in the fault actor.
void MakeFault(const DocumentSink& sink, std::string_view code, std::string_view text,
               std::string_view hostName);

enum class WhiteSpace {
    AsItIs,
    AsEntities,  ///< line feeds and tabs alike as "&#xA;", a lone carriage return as "&#xD;", none before a
                 ///< line feed
};

/// A text as the content of an element or the value of an attribute.
std::string EscapeXml(std::string_view text, WhiteSpace whiteSpace = WhiteSpace::AsItIs);

}  // namespace quorbel
