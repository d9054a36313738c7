/**
 * @file vok_library.h
 * The library, loaded by its name at run time: which library it is depends on the printer.
 */
#pragma once

#include <vok/vok.h>

#include <string>

namespace vok::sample {

/// The exports that a job needs.
struct VokCalls {
    VOKLaunchXFilesFn launch = nullptr;
    VOKSendMsgFn sendDral = nullptr;
    VOKSendMsgFn sendNemb = nullptr;
};

/// Holds `<prefix>vok.dll` loaded.
class VokLibrary {
  public:
    VokLibrary() = default;
    ~VokLibrary();
    VokLibrary(const VokLibrary&) = delete;
    VokLibrary& operator=(const VokLibrary&) = delete;

    /// Loads the library from `directory` and looks its exports up. The result is a system error
    /// code; without success nothing stays loaded.
    DWORD load(const std::string& directory, const std::string& prefix);

    /// Gives the library back; its calls are gone.
    void unload();

    [[nodiscard]] const VokCalls& calls() const { return calls_; }
    [[nodiscard]] HMODULE module() const { return module_; }
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    HMODULE module_ = nullptr;
    VokCalls calls_;
    std::string path_;
};

}  // namespace vok::sample
