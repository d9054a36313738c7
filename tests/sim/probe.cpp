// A DLL that asks its system for this and that, as the library under test would.
#include <windows.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace {

struct Version {
    Version() {
        info.dwOSVersionInfoSize = sizeof(info);
        isRead = ::GetVersionExA(&info) != FALSE;
    }
    OSVERSIONINFOA info{};
    bool isRead = false;
};

const Version version;

}  // namespace

extern "C" {

__declspec(dllexport) DWORD probeMajor() {
    return version.isRead ? version.info.dwMajorVersion : 0;
}

// Throws and catches, and tells the message's length.
__declspec(dllexport) size_t probeThrow(const char* text) {
    try {
        throw std::runtime_error(text);
    } catch (const std::exception& e) {
        return std::string(e.what()).size();
    }
}

__declspec(dllexport) DWORD probeAppend(const char* path, const char* text) {
    const HANDLE file =
        ::CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return ::GetLastError();
    }
    DWORD written = 0;
    ::SetFilePointer(file, 0, nullptr, FILE_END);
    const BOOL ok =
        ::WriteFile(file, text, static_cast<DWORD>(::lstrlenA(text)), &written, nullptr);
    const DWORD error = ok ? 0 : ::GetLastError();
    ::CloseHandle(file);
    return error;
}
}

BOOL APIENTRY DllMain(HINSTANCE, DWORD, LPVOID) {
    return version.isRead ? TRUE : FALSE;
}
