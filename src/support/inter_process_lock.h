// A scoped hold on a named mutex.
#pragma once

#include <exception>

namespace vok {

class Mutex;

class InterProcessLock {
  public:
    // Waits for the mutex without a bound; does not own it. Throws Win32Exception for a mutex
    // without a name, before waiting, and when the wait fails.
    explicit InterProcessLock(Mutex* mutex);

    // Releases the mutex. Throws Win32Exception when that fails, unless the lock goes
    // because of another exception.
    ~InterProcessLock() noexcept(false);

    InterProcessLock(const InterProcessLock&) = delete;
    InterProcessLock& operator=(const InterProcessLock&) = delete;

  private:
    Mutex* mutex_;
    // How many exceptions were on their way when the lock was taken. Not merely whether: an
    // exception that left the library for good stays counted on its thread.
    int exceptionsBefore_ = std::uncaught_exceptions();
};

}  // namespace vok
