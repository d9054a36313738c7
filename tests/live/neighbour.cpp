#include "neighbour.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "live_program.h"

namespace vok::test {

Neighbour::Neighbour(const std::string& what, const std::string& name)
    : ready_(CreateEventA(nullptr, TRUE, FALSE, (livePrefix() + "ready").c_str())),
      go_(CreateEventA(nullptr, TRUE, FALSE, (livePrefix() + "go").c_str())) {
    std::string line = "\"" VOK_LIVE_FIXTURES "\\live_neighbour.exe\" " + livePrefix() + "ready " +
                       livePrefix() + "go " + what + " \"" + name + "\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &process))
        << line << ": error " << GetLastError();
    CloseHandle(process.hThread);
    process_ = process.hProcess;
    const std::array<HANDLE, 2> either{ready_, process_};
    holds_ = WaitForMultipleObjects(2, either.data(), FALSE, INFINITE) == WAIT_OBJECT_0;
}

Neighbour::~Neighbour() {
    die();
    CloseHandle(process_);
    CloseHandle(ready_);
    CloseHandle(go_);
}

void Neighbour::die() {
    SetEvent(go_);
    WaitForSingleObject(process_, INFINITE);
    holds_ = false;
}

}  // namespace vok::test
