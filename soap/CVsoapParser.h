#pragma once

#include "soap/RequestRecord.h"

class CVLogInterface;

namespace quorbel {

/// Parses one SOAP envelope into `record` (which should be empty) and sets g_szCommand and currentMethodCode.
///
/// `body` is a zero-terminated document in the encoding that it declares, UTF-8 without a declaration; values
/// arrive in the record as UTF-8. Only the method element and the fields inside it matter, wherever they
/// stand. Returns 1, also for a body without a known method or one that ends too soon, and 0 with an error
/// entry in `log` when the body is not well-formed, holds a document type declaration, or makes the XML parser
/// ask for more than twice its own size and 4 MB.
int ParseEnvelope(const char* body, RequestRecord& record, CVLogInterface& log);

}  // namespace quorbel
