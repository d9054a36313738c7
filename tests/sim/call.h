// One call of a substitute: the lock, the record, the failure on demand, the last error.
//
// A substitute makes a Call first, asks `fails`, and returns through `done` or `failed`. The last
// error that the caller sees afterwards is the one it had before, unless `error` set another: a
// successful call leaves it alone.
#pragma once
#include <windows.h>

#include <concepts>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "faults.h"
#include "handles.h"

namespace vok::test {

class System;

// Arguments as records show them.
struct Hex {
    unsigned long long value;
};
template <class T>
Hex hex(T value) {
    return {static_cast<std::make_unsigned_t<T>>(value)};
}
struct Out {  // a result by address
    const void* address;
};
struct Bytes {  // data by address: its size, and its first bytes
    const void* address;
    size_t size;
};

std::string describe(Hex value);
std::string describe(Out out);
std::string describe(Bytes bytes);
std::string describe(const char* text);
std::string describe(const void* handle);
std::string describe(const SECURITY_ATTRIBUTES* attributes);
std::string describe(const SECURITY_DESCRIPTOR* descriptor);
inline std::string describe(const std::string& text) {
    return text;
}
template <std::integral T>
std::string describe(T number) {
    return std::to_string(number);
}
template <class T>
concept HandleType = std::same_as<T, HWND> || std::same_as<T, HKEY> || std::same_as<T, HMODULE>;
template <HandleType T>
std::string describe(T handle) {
    return describe(static_cast<const void*>(handle));
}

class Call {
  public:
    template <class... Arguments>
    explicit Call(const char* name, const Arguments&... arguments) : Call(start, name) {
        if (recorded_) {
            std::string text;
            ((text += (text.empty() ? "" : ", ") + describe(arguments)), ...);
            record(std::move(text));
        }
    }
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    System& system() { return system_; }

    bool fails() const { return failure_.has_value(); }
    const Failure& failure() const { return *failure_; }
    template <class T>
    T failed() {
        error_ = failure_->error ? failure_->error : error_;
        return done(convert<T>(failure_->result), failure_->error);
    }

    template <class T>
    T done(T result) {
        return done(result, std::string());
    }
    // `note` shows what else came back, as in "= 0 -> 1".
    template <class T>
    T done(T result, const std::string& note) {
        if (recorded_) {
            finish(describeResult(result) + (note.empty() ? "" : " -> " + note));
        }
        return result;
    }
    // A failure with a last error; 0 leaves the last error alone.
    template <class T>
    T done(T result, DWORD error) {
        error_ = error ? error : error_;
        if (recorded_) {
            const std::string note = error ? " (error " + std::to_string(error) + ")" : "";
            finish(describeResult(result) + note);
        }
        return result;
    }
    void setError(DWORD error) { error_ = error; }
    // Something that no correct program does.
    void complain(const std::string& what);

    // Runs `work` without the lock: what may block, or call back into a test.
    template <class Work>
    auto unlocked(const Work& work) {
        const Unlocked scope(*this);
        return work();
    }

  private:
    enum Start { start };
    Call(Start, const char* name);
    class Unlocked {
      public:
        explicit Unlocked(Call& call) : call_(call) { call_.leave(); }
        ~Unlocked() { call_.enter(); }
        Unlocked(const Unlocked&) = delete;
        Unlocked& operator=(const Unlocked&) = delete;

      private:
        Call& call_;
    };
    void enter();
    void leave();
    void record(std::string arguments);
    void finish(std::string result);
    template <class T>
    static T convert(LONG_PTR value) {
        if constexpr (std::is_pointer_v<T>) {
            return reinterpret_cast<T>(value);
        } else {
            return static_cast<T>(value);
        }
    }
    template <class T>
    static std::string describeResult(T result) {
        if constexpr (std::is_pointer_v<T>) {
            return describe(reinterpret_cast<const void*>(result));
        } else {
            return describe(result);
        }
    }

    System& system_;
    const char* name_;
    DWORD error_;
    std::optional<Failure> failure_;
    size_t index_ = 0;
    bool recorded_ = false;
};

}  // namespace vok::test
