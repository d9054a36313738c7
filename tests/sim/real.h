// The system's own functions, for the simulation itself: the test program's import table may have
// been replaced, so nothing in here may call through it.
#pragma once
#include <windows.h>

namespace vok::test {

// Makes a function pointer of type F out of an untyped address.
template <class F>
F functionAt(FARPROC address) {
    return reinterpret_cast<F>(reinterpret_cast<void*>(address));
}

struct RealFunctions {
    RealFunctions();
    decltype(&::CloseHandle) closeHandle;
    decltype(&::WaitForSingleObject) waitForSingleObject;
    decltype(&::Sleep) sleep;
    decltype(&::GetLastError) getLastError;
    decltype(&::SetLastError) setLastError;
    decltype(&::GetCurrentThreadId) getCurrentThreadId;
    decltype(&::GetCurrentProcessId) getCurrentProcessId;
    decltype(&::GetTickCount) getTickCount;
    decltype(&::GetProcAddress) getProcAddress;
    decltype(&::GetModuleHandleA) getModuleHandleA;
    decltype(&::LoadLibraryA) loadLibraryA;
    decltype(&::LoadLibraryExA) loadLibraryExA;
    decltype(&::FreeLibrary) freeLibrary;
    decltype(&::GetModuleFileNameA) getModuleFileNameA;
    decltype(&::VirtualProtect) virtualProtect;
    decltype(&::CreateFileA) createFileA;
    decltype(&::ReadFile) readFile;
    decltype(&::WriteFile) writeFile;
    decltype(&::GetFileSize) getFileSize;
    decltype(&::SetFilePointer) setFilePointer;
    decltype(&::DeleteFileA) deleteFileA;
    decltype(&::EnterCriticalSection) enterCriticalSection;
    decltype(&::LeaveCriticalSection) leaveCriticalSection;
    decltype(&::InitializeCriticalSection) initializeCriticalSection;
    decltype(&::DeleteCriticalSection) deleteCriticalSection;
    decltype(&::TlsGetValue) tlsGetValue;
    decltype(&::TlsSetValue) tlsSetValue;
    decltype(&::InitializeSecurityDescriptor) initializeSecurityDescriptor;
    decltype(&::SetSecurityDescriptorDacl) setSecurityDescriptorDacl;
    decltype(&::GetSecurityDescriptorDacl) getSecurityDescriptorDacl;
    decltype(&::AllocateAndInitializeSid) allocateAndInitializeSid;
    decltype(&::FreeSid) freeSid;
    decltype(&::IsValidSid) isValidSid;
    decltype(&::GetLengthSid) getLengthSid;
    decltype(&::InitializeAcl) initializeAcl;
    decltype(&::AddAccessAllowedAce) addAccessAllowedAce;
    decltype(&::GetAce) getAce;
};

// Looked up once, before anything can have been replaced.
extern const RealFunctions real;

// The address of an exported function, following `dll` as an import table names it; null if none.
void* realAddress(const char* dll, const char* name);

}  // namespace vok::test
