#pragma once

#include <string>

namespace quorbel {

/// Stands for the service's address until a site is laid out, which knows it.
inline constexpr char kEndpointPlaceholder[] = "@ENDPOINT@";

/// The whole service description (WSDL 1.1, document/literal wrapped, SOAP 1.1), made from the tables that
/// the parser reads requests by, so that the two cannot disagree.
std::string ServiceDescription();

}  // namespace quorbel
