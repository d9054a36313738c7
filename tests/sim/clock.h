// The simulated machine's time. It stands still unless a call or a test moves it.
#pragma once
#include <windows.h>

#include <string>

namespace vok::test {

class Clock {
  public:
    Clock();
    DWORD tick() const { return startTick_ + static_cast<DWORD>(passed_); }
    SYSTEMTIME local() const;
    // "2024/03/07-09:05:01.042 ", as a log line begins.
    std::string logField() const;
    ULONGLONG passed() const { return passed_; }  // milliseconds since the start

    void advance(ULONGLONG milliseconds) { passed_ += milliseconds; }
    void setTick(DWORD tick) { startTick_ = tick - static_cast<DWORD>(passed_); }
    void setLocal(const SYSTEMTIME& time);

    // How far each GetTickCount moves the clock; with 0 two reads give the same tick.
    DWORD stepPerRead = 0;

  private:
    DWORD startTick_ = 100000;
    ULONGLONG passed_ = 0;
    ULONGLONG startLocal_ = 0;  // 100 ns units
};

}  // namespace vok::test
