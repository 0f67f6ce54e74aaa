#include "TranslationRecords.h"

MessagingParameters gMsgParameters;
AdministrationParameters gParameters;
