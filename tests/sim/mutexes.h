// Named mutexes of the simulated machine: those the library makes, and those that others hold.
#pragma once
#include <windows.h>

#include <map>
#include <memory>
#include <string>

#include "handles.h"

namespace vok::test {

class Call;

struct MutexData {
    std::string name;            // case counts
    std::string security;        // as records show it
    DWORD owner = 0;             // thread that holds it; 0: free
    DWORD count = 0;             // how often it does
    bool abandoned = false;      // the next wait says so
    bool heldElsewhere = false;  // by another process
    ULONGLONG heldUntil = 0;     // by the clock, or for ever
    size_t waits = 0;
    size_t releases = 0;
};

class Mutexes {
  public:
    // A mutex of another process, such as a running companion's.
    MutexData& add(const std::string& name);
    // Held by another process for so many milliseconds of the virtual clock.
    void holdElsewhere(const std::string& name, DWORD milliseconds);
    void abandon(const std::string& name) { add(name).abandoned = true; }
    void remove(const std::string& name) { kept_.erase(name); }
    // Openings of that name fail with 5.
    void deny(const std::string& name) {
        add(name);
        denied_ = name;
    }

    // Null when there is none with that name.
    MutexData* find(const std::string& name) const;
    // How many are held by a thread of this process.
    size_t countHeld() const;

    // For the substitutes.
    std::shared_ptr<MutexData> share(const std::string& name) const;
    void remember(const std::shared_ptr<MutexData>& mutex) { named_[mutex->name] = mutex; }
    bool denies(const std::string& name) const { return !name.empty() && denied_ == name; }
    DWORD wait(Call& call, HANDLE handle, DWORD milliseconds);

  private:
    DWORD waitElsewhere(Call& call, MutexData& mutex, DWORD milliseconds);

    std::map<std::string, std::weak_ptr<MutexData>> named_;
    std::map<std::string, std::shared_ptr<MutexData>> kept_;  // others' own
    std::string denied_;
};

}  // namespace vok::test
