#include "RequestGlobals.h"

#include "MethodTable.h"

char g_szCommand[256];
int currentMethodCode = kNoMethod;
char m_szHostName[256];
char m_szPath[1024];
StartArguments gArguments;
