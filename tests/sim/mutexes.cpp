#include "mutexes.h"

#include <memory>
#include <span>
#include <string>
#include <utility>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

constexpr ULONGLONG forEver = ~0ULL;

HANDLE giveMutex(System& system, std::shared_ptr<MutexData> mutex) {
    return system.handles.open(Kind::mutex, std::move(mutex));
}

HANDLE WINAPI createMutexA(LPSECURITY_ATTRIBUTES security, BOOL initialOwner, LPCSTR name) {
    Call call("CreateMutexA", static_cast<const SECURITY_ATTRIBUTES*>(security), initialOwner,
              name);
    if (call.fails()) {
        return call.failed<HANDLE>();
    }
    System& system = call.system();
    const std::string given = name ? name : "";
    if (given.size() >= MAX_PATH) {
        return call.done(HANDLE{nullptr}, DWORD{ERROR_FILENAME_EXCED_RANGE});
    }
    if (system.mutexes.denies(given)) {
        return call.done(HANDLE{nullptr}, DWORD{ERROR_ACCESS_DENIED});
    }
    auto mutex = given.empty() ? nullptr : system.mutexes.share(given);
    call.setError(mutex ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    if (!mutex) {
        mutex = std::make_shared<MutexData>();
        mutex->name = given;
        mutex->security = describe(static_cast<const SECURITY_ATTRIBUTES*>(security));
        mutex->owner = initialOwner ? real.getCurrentThreadId() : 0;
        mutex->count = initialOwner ? 1 : 0;
        system.mutexes.remember(mutex);
    }
    return call.done(giveMutex(system, std::move(mutex)));
}

HANDLE WINAPI openMutexA(DWORD access, BOOL inherit, LPCSTR name) {
    Call call("OpenMutexA", hex(access), inherit, name);
    if (call.fails()) {
        return call.failed<HANDLE>();
    }
    System& system = call.system();
    if (system.mutexes.denies(name)) {
        return call.done(HANDLE{nullptr}, DWORD{ERROR_ACCESS_DENIED});
    }
    auto mutex = system.mutexes.share(name);
    return mutex ? call.done(giveMutex(system, std::move(mutex)))
                 : call.done(HANDLE{nullptr}, DWORD{ERROR_FILE_NOT_FOUND});
}

BOOL WINAPI releaseMutex(HANDLE handle) {
    Call call("ReleaseMutex", handle);
    auto* mutex = call.system().handles.get<MutexData>(handle, Kind::mutex);
    const bool isOwner = mutex && mutex->owner == real.getCurrentThreadId();
    if (isOwner && --mutex->count == 0) {
        mutex->owner = 0;
        ++mutex->releases;
    }
    if (call.fails()) {  // a failure on demand lets the mutex go, so that nobody waits for ever
        return call.failed<BOOL>();
    }
    if (!mutex) {
        call.complain("not an open mutex: " + handleName(handle));
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    return isOwner ? call.done(TRUE) : call.done(FALSE, DWORD{ERROR_NOT_OWNER});
}

// The runtime waits for its own, real handles by the same import.
DWORD WINAPI waitForSingleObject(HANDLE handle, DWORD milliseconds) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.waitForSingleObject(handle, milliseconds);
    }
    Call call("WaitForSingleObject", handle, hex(milliseconds));
    if (call.fails()) {
        if (call.failure().result == WAIT_ABANDONED) {
            call.system().mutexes.wait(call, handle, milliseconds);
        }
        return call.failed<DWORD>();
    }
    if (!isSimulated(handle) || kindOf(handle) != Kind::mutex) {
        call.complain("waits for something that is no mutex: " + handleName(handle));
        return call.done(WAIT_FAILED, DWORD{ERROR_INVALID_HANDLE});
    }
    const DWORD result = call.system().mutexes.wait(call, handle, milliseconds);
    return call.done(result, DWORD{result == WAIT_FAILED ? ERROR_INVALID_HANDLE : 0ul});
}

}  // namespace

MutexData& Mutexes::add(const std::string& name) {
    if (MutexData* found = find(name)) {
        kept_[name] = share(name);
        return *found;
    }
    auto made = std::make_shared<MutexData>();
    made->name = name;
    kept_[name] = made;
    remember(made);
    return *made;
}

void Mutexes::holdElsewhere(const std::string& name, DWORD milliseconds) {
    MutexData& mutex = add(name);
    mutex.heldElsewhere = true;
    mutex.heldUntil =
        milliseconds == INFINITE ? forEver : System::current().clock.passed() + milliseconds;
}

MutexData* Mutexes::find(const std::string& name) const {
    return share(name).get();
}

std::shared_ptr<MutexData> Mutexes::share(const std::string& name) const {
    const auto it = named_.find(name);
    return it == named_.end() ? nullptr : it->second.lock();
}

size_t Mutexes::countHeld() const {
    size_t held = 0;
    for (const auto& [name, weak] : named_) {
        const auto mutex = weak.lock();
        held += mutex && mutex->owner != 0 ? 1 : 0;
    }
    return held;
}

// Moves the clock to the moment when the other process lets go.
DWORD Mutexes::waitElsewhere(Call& call, MutexData& mutex, DWORD milliseconds) {
    Clock& clock = call.system().clock;
    const ULONGLONG needed =
        mutex.heldUntil > clock.passed() ? mutex.heldUntil - clock.passed() : 0;
    if (mutex.heldUntil == forEver && milliseconds == INFINITE) {
        call.complain("waits for ever for " + mutex.name);
        return WAIT_FAILED;
    }
    if (milliseconds != INFINITE && needed > milliseconds) {
        clock.advance(milliseconds);
        return WAIT_TIMEOUT;
    }
    clock.advance(needed);
    mutex.heldElsewhere = false;
    return WAIT_OBJECT_0;
}

DWORD Mutexes::wait(Call& call, HANDLE handle, DWORD milliseconds) {
    auto* mutex = call.system().handles.get<MutexData>(handle, Kind::mutex);
    if (!mutex) {
        call.complain("not an open mutex: " + handleName(handle));
        return WAIT_FAILED;
    }
    ++mutex->waits;
    const DWORD self = real.getCurrentThreadId();
    if (mutex->heldElsewhere) {
        const DWORD result = waitElsewhere(call, *mutex, milliseconds);
        if (result != WAIT_OBJECT_0) {
            return result;
        }
    }
    // Another thread of this process: really wait for it.
    for (DWORD waited = 0; mutex->owner != 0 && mutex->owner != self; ++waited) {
        if (milliseconds != INFINITE && waited >= milliseconds) {
            return WAIT_TIMEOUT;
        }
        call.unlocked([waited] { real.sleep(waited < 50 ? 0 : 1); });
    }
    mutex->owner = self;
    ++mutex->count;
    return std::exchange(mutex->abandoned, false) ? WAIT_ABANDONED : WAIT_OBJECT_0;
}

std::span<const Substitute> mutexSubstitutes() {
    static const Substitute all[] = {
        substitute("CreateMutexA", createMutexA),
        substitute("OpenMutexA", openMutexA),
        substitute("ReleaseMutex", releaseMutex),
        substitute("WaitForSingleObject", waitForSingleObject),
    };
    return all;
}

}  // namespace vok::test
