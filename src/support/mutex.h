// A named system mutex.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "support/inline_text.h"

namespace vok {

// Owns the handle of a named mutex and counts how often its owning thread holds it. Threads
// may share one object as long as each releases only what it acquired: the fields belong to whoever
// holds the mutex. Names are used as given, session prefix included. Every failure throws
// Win32Exception.
class Mutex {
  public:
    // Creates the mutex, or opens the one that bears the name. everyoneAccess: with a security
    // descriptor that lets everyone use it; otherwise with default security.
    Mutex(bool initialOwner, std::string_view name, bool everyoneAccess);

    // Opens an existing mutex with full access and an inheritable handle.
    explicit Mutex(std::string_view name);

    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // Waits for at most `timeout` milliseconds (INFINITE: without a bound). An abandoned mutex is
    // acquired like a free one. False after the time-out, and for 0 without looking at the mutex.
    bool acquire(std::uint32_t timeout);

    // Gives up every acquisition of the calling thread at once. Does nothing for another thread.
    void release();

    std::string_view getName() const { return name_; }

  private:
    static constexpr std::size_t usualName = 40;

    HANDLE createMutex(SECURITY_ATTRIBUTES* attributes, bool initialOwner);
    HANDLE openMutex(DWORD access, bool inherit) const;
    void noteAcquired();

    HANDLE handle_ = nullptr;
    InlineText<usualName> name_;
    std::uint32_t count_ = 0;
    std::uint32_t owner_ = 0;
};

}  // namespace vok
