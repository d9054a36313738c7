#include "real.h"

namespace vok::test {
namespace {

template <class F>
void find(F& function, const char* dll, const char* name) {
    function = functionAt<F>(::GetProcAddress(::LoadLibraryA(dll), name));
}

void findSecurity(RealFunctions& all) {
    constexpr const char* dll = "advapi32.dll";
    find(all.initializeSecurityDescriptor, dll, "InitializeSecurityDescriptor");
    find(all.setSecurityDescriptorDacl, dll, "SetSecurityDescriptorDacl");
    find(all.getSecurityDescriptorDacl, dll, "GetSecurityDescriptorDacl");
    find(all.allocateAndInitializeSid, dll, "AllocateAndInitializeSid");
    find(all.freeSid, dll, "FreeSid");
    find(all.isValidSid, dll, "IsValidSid");
    find(all.getLengthSid, dll, "GetLengthSid");
    find(all.initializeAcl, dll, "InitializeAcl");
    find(all.addAccessAllowedAce, dll, "AddAccessAllowedAce");
    find(all.getAce, dll, "GetAce");
}

}  // namespace

RealFunctions::RealFunctions() {
    constexpr const char* dll = "kernel32.dll";
    find(closeHandle, dll, "CloseHandle");
    find(waitForSingleObject, dll, "WaitForSingleObject");
    find(sleep, dll, "Sleep");
    find(getLastError, dll, "GetLastError");
    find(setLastError, dll, "SetLastError");
    find(getCurrentThreadId, dll, "GetCurrentThreadId");
    find(getCurrentProcessId, dll, "GetCurrentProcessId");
    find(getTickCount, dll, "GetTickCount");
    find(getProcAddress, dll, "GetProcAddress");
    find(getModuleHandleA, dll, "GetModuleHandleA");
    find(loadLibraryA, dll, "LoadLibraryA");
    find(loadLibraryExA, dll, "LoadLibraryExA");
    find(freeLibrary, dll, "FreeLibrary");
    find(getModuleFileNameA, dll, "GetModuleFileNameA");
    find(virtualProtect, dll, "VirtualProtect");
    find(createFileA, dll, "CreateFileA");
    find(readFile, dll, "ReadFile");
    find(writeFile, dll, "WriteFile");
    find(getFileSize, dll, "GetFileSize");
    find(setFilePointer, dll, "SetFilePointer");
    find(deleteFileA, dll, "DeleteFileA");
    find(enterCriticalSection, dll, "EnterCriticalSection");
    find(leaveCriticalSection, dll, "LeaveCriticalSection");
    find(initializeCriticalSection, dll, "InitializeCriticalSection");
    find(deleteCriticalSection, dll, "DeleteCriticalSection");
    find(tlsGetValue, dll, "TlsGetValue");
    find(tlsSetValue, dll, "TlsSetValue");
    findSecurity(*this);
}

const RealFunctions real;

void* realAddress(const char* dll, const char* name) {
    const HMODULE module = real.loadLibraryA(dll);
    return module ? reinterpret_cast<void*>(real.getProcAddress(module, name)) : nullptr;
}

}  // namespace vok::test
