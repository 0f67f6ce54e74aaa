#pragma once

namespace quorbel {

/// Throws the CVconException of a unit of threads, locks and events.
///
/// `code` is the error number of the call that failed, whose text becomes the system message; 0 for none.
/// `threadId` 0 stands for the calling thread.
[[noreturn]] void RaiseConFailure(const char* unit, int line, const char* message, int code,
                                  int threadId = 0);

}  // namespace quorbel
