#pragma once

#include "soap/RequestRecord.h"

namespace quorbel {

/// Turns a parsed request into its command record, runs soapProcess and so writes the answer. Returns 1 when
/// the request was handled, also by a fault about its address, and 0 when it was refused before that. The
/// event log must exist. Called once per run.
int TranslateRequest(const RequestRecord& record);

}  // namespace quorbel
