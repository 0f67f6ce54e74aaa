#pragma once

#include "CVobject.h"

/// The last resort of the logging framework: reports to the operating system's log what the program's own log
/// cannot take.
///
/// An entry reads "<identity>-ERROR <source>: <message>", for information too. `source` names the reporting
/// operation; `identity`, the module as a rule, is also the name the entry is listed under, and null or empty
/// stands for the program's short name. In the joined text "%%" becomes "%" and "%m" the text of `errno`, as
/// syslog would do it; any other "%" is safe and stays. A message is cut at 65534 bytes.
///
/// Nothing stays open between calls. Any thread may call. Nothing is thrown.
class CVsystemLog : public CVobject {
public:
    /// Both return 0 only when there was no memory for the message.
    [[gnu::format(printf, 3, 4)]] static int WriteInfo(const char* source, const char* identity,
                                                       const char* format, ...) noexcept;
    [[gnu::format(printf, 3, 4)]] static int WriteError(const char* source, const char* identity,
                                                        const char* format, ...) noexcept;
};
