#include "support/inter_process_lock.h"

#include <windows.h>

#include <exception>

#include "support/exception.h"
#include "support/mutex.h"

namespace vok {

InterProcessLock::InterProcessLock(Mutex* mutex) : mutex_(mutex) {
    if (mutex->getName().empty()) {
        throw Win32Exception("InterProcessLock has no name", 0, "InterProcessLock", 16);
    }
    mutex->acquire(INFINITE);
}

InterProcessLock::~InterProcessLock() noexcept(false) {
    try {
        mutex_->release();
    } catch (...) {
        // A second exception on top of the one that unwinds would end the process.
        if (std::uncaught_exceptions() <= exceptionsBefore_) {
            throw;
        }
    }
}

}  // namespace vok
