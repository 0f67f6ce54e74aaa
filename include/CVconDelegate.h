#pragma once

#include <pthread.h>

#include "CVobject.h"

/// What a CVconThread runs.
class CVconDelegate : public CVobject {
public:
    /// The thread's body: the thread ends when it returns.
    ///
    /// A body can be ended in the middle, by CVconThread::Kill or Exit: its objects are destroyed as by an
    /// exception. A catch-all in it must therefore re-throw `abi::__forced_unwind`. Any exception that leaves
    /// the body ends the process.
    virtual void DoWork(pthread_t threadId) = 0;
};
