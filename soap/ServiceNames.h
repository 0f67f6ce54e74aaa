#pragma once

namespace quorbel {

// The names by which clients know the service. Operators choose the two namespaces of their own at build time
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

}  // namespace quorbel
