#include "soap/RequestGlobals.h"

#include "soap/Methods.h"

using namespace quorbel;

char g_szCommand[256];
int currentMethodCode = kNoMethod;
char m_szHostName[256];
char m_szPath[1024];
StartArguments gArguments;
