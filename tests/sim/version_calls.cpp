// The system's version and its texts for error codes.
#include <cstdarg>
#include <cstring>
#include <span>

#include "call.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

BOOL WINAPI getVersionExA(LPOSVERSIONINFOA information) {
    const DWORD size = information->dwOSVersionInfoSize;
    Call call("GetVersionExA", size);
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    const OsRelease& os = call.system().os;
    const bool isExtended = size == sizeof(OSVERSIONINFOEXA);
    if (size != sizeof(OSVERSIONINFOA) && !(isExtended && os.isNtFrom(5, 0))) {
        return call.done(FALSE, DWORD{ERROR_INSUFFICIENT_BUFFER});
    }
    std::memset(information, 0, size);
    information->dwOSVersionInfoSize = size;
    information->dwMajorVersion = os.major;
    information->dwMinorVersion = os.minor;
    information->dwBuildNumber = os.build;
    information->dwPlatformId = os.platform;
    if (isExtended) {
        reinterpret_cast<OSVERSIONINFOEXA*>(information)->wProductType = VER_NT_WORKSTATION;
    }
    return call.done(TRUE);
}

DWORD WINAPI formatMessageA(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPSTR buffer,
                            DWORD size, va_list*) {
    Call call("FormatMessageA", hex(flags), Out{source}, code, hex(language), Out{buffer}, size);
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    const auto& texts = call.system().messages;
    const auto it = texts.find(code);
    if (it == texts.end()) {
        return call.done(DWORD{0}, DWORD{ERROR_MR_MID_NOT_FOUND});
    }
    const auto length = static_cast<DWORD>(it->second.size());
    if (length >= size) {
        return call.done(DWORD{0}, DWORD{ERROR_INSUFFICIENT_BUFFER});
    }
    call.system().fillGreedily(buffer, size);
    std::memcpy(buffer, it->second.c_str(), length + 1);
    return call.done(length);
}

}  // namespace

std::span<const Substitute> versionSubstitutes() {
    static const Substitute all[] = {substitute("GetVersionExA", getVersionExA),
                                     substitute("FormatMessageA", formatMessageA)};
    return all;
}

}  // namespace vok::test
