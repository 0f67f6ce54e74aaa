#include "RequestGlobals.h"

#include "MethodTable.h"

char g_szCommand[256];
int g_nMethodCode = kNoMethod;
char m_szHostName[256];
StartArguments gArguments;
