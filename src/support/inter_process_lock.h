// A scoped hold on a named mutex.
#ifndef VOK_SUPPORT_INTER_PROCESS_LOCK_H
#define VOK_SUPPORT_INTER_PROCESS_LOCK_H

namespace vok {

class Mutex;

class InterProcessLock {
  public:
    // Waits for the mutex without a bound; does not own it. Throws Win32Exception for a mutex
    // without a name, before waiting, and when the wait fails.
    explicit InterProcessLock(Mutex* mutex);

    // Releases the mutex. Throws Win32Exception when that fails, unless another exception is
    // already on its way.
    ~InterProcessLock() noexcept(false);

    InterProcessLock(const InterProcessLock&) = delete;
    InterProcessLock& operator=(const InterProcessLock&) = delete;

  private:
    Mutex* mutex_;
};

}  // namespace vok

#endif
