#include "process/TranslationRecords.h"

MessagingParameters gMsgParameters;
AdministrationParameters gParameters;
