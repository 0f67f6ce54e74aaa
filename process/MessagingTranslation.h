#pragma once

#include "process/TranslationRecords.h"
#include "soap/RequestRecord.h"

namespace quorbel {

/// What a parsed request means as a message, a message query or a confirmation. Pure.
MessagingParameters TranslateMessaging(const RequestRecord& record);

}  // namespace quorbel
