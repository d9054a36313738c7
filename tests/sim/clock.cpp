#include "clock.h"

#include <cstdio>
#include <span>
#include <string>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

constexpr ULONGLONG unitsPerMillisecond = 10000;

DWORD WINAPI getTickCount() {
    Call call("GetTickCount");
    Clock& clock = call.system().clock;
    const DWORD tick = clock.tick();
    clock.advance(clock.stepPerRead);
    return call.done(tick);
}

void WINAPI getLocalTime(SYSTEMTIME* time) {
    Call call("GetLocalTime", Out{time});
    *time = call.system().clock.local();
    call.done(0);
}

// The runtime gives up its time slice with Sleep(0).
void WINAPI sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        real.sleep(0);
        return;
    }
    {
        Call call("Sleep", milliseconds);
        call.system().clock.advance(milliseconds);
        call.done(0);
    }
    System::current().slept(milliseconds);
}

}  // namespace

Clock::Clock() {
    SYSTEMTIME start{};
    start.wYear = 2024;
    start.wMonth = 3;
    start.wDay = 7;
    start.wHour = 9;
    start.wMinute = 5;
    start.wSecond = 1;
    start.wMilliseconds = 42;
    setLocal(start);
}

SYSTEMTIME Clock::local() const {
    const ULONGLONG now = startLocal_ + passed_ * unitsPerMillisecond;
    const FILETIME fileTime{static_cast<DWORD>(now), static_cast<DWORD>(now >> 32)};
    SYSTEMTIME time{};
    ::FileTimeToSystemTime(&fileTime, &time);
    return time;
}

std::string Clock::logField() const {
    const SYSTEMTIME time = local();
    char text[64];
    std::snprintf(text, sizeof(text), "%04u/%02u/%02u-%02u:%02u:%02u.%03u ", time.wYear,
                  time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond,
                  time.wMilliseconds);
    return text;
}

void Clock::setLocal(const SYSTEMTIME& time) {
    FILETIME fileTime{};
    ::SystemTimeToFileTime(&time, &fileTime);
    const ULONGLONG now = (ULONGLONG{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
    startLocal_ = now - passed_ * unitsPerMillisecond;
}

std::span<const Substitute> clockSubstitutes() {
    static const Substitute all[] = {substitute("GetTickCount", getTickCount),
                                     substitute("GetLocalTime", getLocalTime),
                                     substitute("Sleep", sleep)};
    return all;
}

}  // namespace vok::test
