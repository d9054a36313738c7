/* The entry point, the getters, and the two things that all of the rest asks the system for. */
#include <string.h>

#include "floor.h"

CRITICAL_SECTION createLock;
CRITICAL_SECTION configLock;
HMODULE floorModule;
BOOL floorOnNt;

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved) {
    (void)reserved;
    if (reason == DLL_PROCESS_ATTACH) {
        OSVERSIONINFOEXA version;
        memset(&version, 0, sizeof version);
        version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        GetVersionExA((OSVERSIONINFOA*)&version);
        floorOnNt = version.dwPlatformId == VER_PLATFORM_WIN32_NT;
        if (floorOnNt && version.dwMajorVersion >= 5) {
            version.dwOSVersionInfoSize = sizeof version;
            GetVersionExA((OSVERSIONINFOA*)&version);
        }
        InitializeCriticalSection(&createLock);
        InitializeCriticalSection(&configLock);
        floorModule = module;
    }
    return TRUE;
}

HWND VOKGetDral(VKDATA* record) {
    return record == NULL ? NULL : (HWND)record->hDRAL;
}

HWND VOKGetNemb(VKDATA* record) {
    return record == NULL ? NULL : (HWND)record->hNEMB;
}

int osFamily(void) {
    OSVERSIONINFOA version;
    memset(&version, 0, sizeof version);
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    GetLastError();
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) {
        return family_9x;
    }
    if (version.dwMajorVersion == 5) {
        return version.dwMinorVersion == 0 ? 2 : 3;
    }
    return version.dwMajorVersion < 5 ? 4 : 6;
}

void makeOpenSecurity(OpenSecurity* security, BOOL inheritable) {
    security->attributes.nLength = sizeof security->attributes;
    security->attributes.lpSecurityDescriptor = NULL;
    security->attributes.bInheritHandle = TRUE;
    if (!floorOnNt) {
        return;
    }
    SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
    InitializeSecurityDescriptor(&security->descriptor, SECURITY_DESCRIPTOR_REVISION);
    AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &security->sid);
    IsValidSid(security->sid);
    ACL* list = (ACL*)security->list;
    InitializeAcl(list, sizeof(ACL) + 8 + GetLengthSid(security->sid), ACL_REVISION);
    AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, security->sid);
    SetSecurityDescriptorDacl(&security->descriptor, TRUE, list, FALSE);
    if (inheritable) {
        void* entry = NULL;
        GetAce(list, 0, &entry);
        ((ACE_HEADER*)entry)->AceFlags |= CONTAINER_INHERIT_ACE;
    }
    security->attributes.lpSecurityDescriptor = &security->descriptor;
}

void freeOpenSecurity(OpenSecurity* security) {
    if (floorOnNt) {
        FreeSid(security->sid);
    }
}
