#pragma once

#include <string>
#include <string_view>

#include "tools/wsdl/XmlWriter.h"

namespace quorbel {

/// A name of the service's own namespace, as the description writes it.
std::string OwnName(std::string_view name);

/// Writes the two schemas: the service's requests and answers, and the detail of its faults.
void WriteSchemas(XmlWriter& xml);

/// The name of a query's answer type: a message and a list of texts.
inline constexpr char kQueryResultType[] = "QueryResult";

}  // namespace quorbel
