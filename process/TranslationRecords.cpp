#include "process/TranslationRecords.h"

using namespace quorbel;

MessagingParameters gMsgParameters;
AdministrationParameters gParameters;
