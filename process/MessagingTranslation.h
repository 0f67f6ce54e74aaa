#pragma once

#include "RequestRecord.h"
#include "TranslationRecords.h"

/// What a parsed request means as a message, a message query or a confirmation. Pure.
MessagingParameters TranslateMessaging(const RequestRecord& record);
