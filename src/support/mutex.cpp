#include "support/mutex.h"

#include <cstdint>
#include <string_view>

#include "support/exception.h"

namespace vok {

namespace {

[[noreturn]] void fail(const char* what, const char* source, std::uint32_t line) {
    const DWORD error = GetLastError();
    throw Win32Exception(what, error, source, line);
}

}  // namespace

Mutex::Mutex(bool initialOwner, std::string_view name, bool everyoneAccess) : name_{name} {
    if (!everyoneAccess) {
        handle_ = createMutex(nullptr, initialOwner);
        return;
    }
    SECURITY_DESCRIPTOR descriptor;
    if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == 0) {
        fail("Mutex::Mutex() InitializeSecurityDescriptor failed", "", 0);
    }
    if (SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) == 0) {
        fail("Mutex::Mutex() SetSecurityDescriptorDacl failed", "", 0);
    }
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    handle_ = createMutex(&attributes, initialOwner);
}

// The handle last: nothing may fail once it is there.
Mutex::Mutex(std::string_view name) : name_{name} {
    // cppcheck-suppress useInitializationList
    handle_ = openMutex(MUTEX_ALL_ACCESS, true);
}

Mutex::~Mutex() {
    CloseHandle(handle_);
}

bool Mutex::acquire(std::uint32_t timeout) {
    if (timeout == 0) {
        return false;
    }
    switch (WaitForSingleObject(handle_, timeout)) {
        case WAIT_OBJECT_0:
        case WAIT_ABANDONED:
            noteAcquired();
            return true;
        case WAIT_TIMEOUT:
            return false;
        default:
            fail("Mutex::acquire() WaitForSingleObject failed", "Mutex", 123);
    }
}

void Mutex::release() {
    if (GetCurrentThreadId() != owner_) {
        return;
    }
    // The last ReleaseMutex lets another thread in, which then owns the fields: nothing is read
    // from them afterwards.
    for (std::uint32_t held = count_; held > 0; --held) {
        count_ = held - 1;
        if (ReleaseMutex(handle_) == 0) {
            fail("Mutex::release() ReleaseMutex failed", "Mutex", 90);
        }
    }
}

HANDLE Mutex::createMutex(SECURITY_ATTRIBUTES* attributes, bool initialOwner) {
    HANDLE handle = CreateMutexA(attributes, initialOwner ? TRUE : FALSE, name_.c_str());
    if (handle == nullptr) {
        fail("Mutex::createMutex() CreateMutex failed", "Mutex", 140);
    }
    if (initialOwner) {
        noteAcquired();
    }
    return handle;
}

HANDLE Mutex::openMutex(DWORD access, bool inherit) const {
    HANDLE handle = OpenMutexA(access, inherit ? TRUE : FALSE, name_.c_str());
    if (handle == nullptr) {
        fail("Mutex::openMutex() openMutex failed", "Mutex", 161);
    }
    return handle;
}

void Mutex::noteAcquired() {
    owner_ = GetCurrentThreadId();
    ++count_;
}

}  // namespace vok
