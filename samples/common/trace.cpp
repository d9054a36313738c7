#include "trace.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <string>

#include "settings.h"

namespace vok::sample {

namespace {

void append(const std::string& path, const std::string& line) {
    // Without FILE_WRITE_DATA every write goes to the end of the file as it is then.
    const HANDLE file = CreateFileA(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
}

}  // namespace

void trace(const std::string& who, const std::string& text) {
    const std::string path = readSetting("", trace_file_value);
    if (path.empty())
        return;
    SYSTEMTIME now{};
    GetLocalTime(&now);
    std::array<char, 64> head{};
    const int length = std::snprintf(head.data(), head.size(), "%02d:%02d:%02d.%03d ", now.wHour,
                                     now.wMinute, now.wSecond, now.wMilliseconds);
    if (length < 0)
        return;
    const std::string line =
        head.data() + who + "[" + std::to_string(GetCurrentProcessId()) + "] " + text + "\n";
    // Several programs write one file, and not every system appends in one step.
    const HANDLE turn = CreateMutexA(nullptr, FALSE, "vok sample trace");
    if (turn != nullptr)
        WaitForSingleObject(turn, INFINITE);
    append(path, line);
    if (turn != nullptr) {
        ReleaseMutex(turn);
        CloseHandle(turn);
    }
}

}  // namespace vok::sample
