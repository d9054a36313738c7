// Locking inside the process.
#pragma once

#include <windows.h>

#include <cstdint>

namespace vok {

// A system critical section that counts how often it is entered. Recursive.
class CriticalSection {
  public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void enter();
    void leave();

    // Entries minus leaves; to be read only by the thread that is inside.
    std::uint32_t depth() const { return depth_; }

  private:
    CRITICAL_SECTION section_;
    std::uint32_t depth_ = 0;
};

// Is inside the section for as long as it lives. The section must outlive it.
class CriticalSectionLock {
  public:
    explicit CriticalSectionLock(CriticalSection* section) : section_(section) {
        section_->enter();
    }
    ~CriticalSectionLock() { section_->leave(); }
    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

  private:
    CriticalSection* section_;
};

}  // namespace vok
