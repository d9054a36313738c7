// One open registry key.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "support/security_everyone.h"

namespace vok {

// Asks for full access and, wherever the system has it, the 64-bit view. Keys that it creates are
// open to everyone, since the spooler's account and the user's companions share them. Every
// failure throws Win32Exception with the registry function's own result as its code.
class RegistryKey64 {
  public:
    // Opens root\path; when it can't be opened and `create` is set, creates it with every level
    // that is missing.
    RegistryKey64(const char* path, bool create, HKEY root);
    virtual ~RegistryKey64();
    RegistryKey64(const RegistryKey64&) = delete;
    RegistryKey64& operator=(const RegistryKey64&) = delete;

    HKEY getHandle() const { return key_; }

    // False, with `out` untouched, when there is no such value. A value that is no 32-bit number
    // is an error.
    bool getValue(const char* name, std::uint32_t* out) const;

    void setValue(const std::string& name, std::uint32_t value) const;

  protected:
    virtual void initAccess();
    virtual void openOrCreate(const char* path, bool create, HKEY root);

  private:
    void createKey(const char* path, HKEY root);
    void createKeyXP(const char* path, HKEY root);
    void createKey9X(const char* path, HKEY root);

    static void regOpenKeyEx(HKEY root, const char* path, DWORD options, REGSAM access, HKEY* key);
    static void regCreateKeyEx(HKEY root, const char* path, DWORD reserved, const char* className,
                               DWORD options, REGSAM access, SECURITY_ATTRIBUTES* attributes,
                               HKEY* key, DWORD* disposition);

    HKEY key_ = nullptr;
    SecurityEveryone security_;
    REGSAM access_ = 0;
};

}  // namespace vok
