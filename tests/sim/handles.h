// The handles that the simulated system gives out.
//
// A handle's value tells its kind and its number within the kind, so that it is the same in every
// run and whatever else was opened: the second file is always file#2, 0x0000005101000008. Values of
// this range are never real handles.
#pragma once
#include <windows.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vok::test {

enum class Kind : uint8_t {
    file = 1,
    mutex,
    pipe,
    process,
    thread,
    token,
    printer,
    key,
    options,  // a key that may be written: the logging's
    window,
    module,
    environment
};
const char* kindName(Kind kind);

// Numbers of modules with a name of their own: the system's libraries and the host program.
constexpr uint32_t firstSystemModule = 0x1000;
constexpr uint32_t lastSystemModule = firstSystemModule + 4;

// The n-th handle of a kind, counted from 1, as the system will give it out.
HANDLE handleOf(Kind kind, uint32_t number);
bool isSimulated(const void* handle);
Kind kindOf(const void* handle);        // of a simulated handle
uint32_t numberOf(const void* handle);  // of a simulated handle

// "file#2", "null", "invalid", "HKLM", or the value in hexadecimal.
std::string handleName(const void* handle);
// As log lines print it: "0x" and 16 upper-case digits, empty for null.
std::string logText(const void* handle);

enum class Closing { closed, closedBefore, unknown };

class Handles {
  public:
    template <class T = void>
    HANDLE open(Kind kind, std::shared_ptr<T> object = nullptr) {
        return add(kind, std::move(object));
    }
    // The object behind an open handle of that kind, else null.
    template <class T>
    T* get(const void* handle, Kind kind) const {
        return static_cast<T*>(find(handle, kind));
    }
    bool isOpen(const void* handle) const { return entries_.contains(handle); }
    Closing close(const void* handle);

    // Sorted, without windows, which belong to others; for leak checks.
    std::vector<std::string> openNames() const;
    size_t countOpen(Kind kind) const;
    uint32_t countMade(Kind kind) const;

  private:
    HANDLE add(Kind kind, std::shared_ptr<void> object);
    void* find(const void* handle, Kind kind) const;

    std::unordered_map<const void*, std::shared_ptr<void>> entries_;
    std::map<Kind, uint32_t> last_;
};

}  // namespace vok::test
