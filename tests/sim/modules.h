// Libraries that the library loads and looks into, the configuration library among them, and the
// names of files and folders.
#pragma once
#include <windows.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "registry.h"

namespace vok::test {

class System;

// The configuration library, which the tests script.
struct ConfigLibrary {
    bool inSearchPath = false;
    bool inDriverDirectory = false;
    bool hasExport = true;
    std::string fileName = "DEMOcfg.dll";
    std::string item = R"(SOFTWARE\Demo)";  // the answer: the registry base path
    DWORD sizingResult = 3;
    std::optional<DWORD> reportedSize;  // instead of the item's own, NUL included
    std::function<void()> whenAsked;    // runs at each call, without the lock
};

// The handle of a system library, or of the host program ("host"): "kernel32", not a number, in
// records. They are never freed, and no leaks. Null for other names.
HMODULE systemModule(std::string_view name);

class Modules {
  public:
    std::string systemDirectory = R"(C:\WINDOWS\system32)";
    std::string windowsDirectory = R"(C:\WINDOWS)";
    std::string hostPath = R"(C:\WINDOWS\system32\spoolsv.exe)";
    std::string libraryPath = R"(C:\WINDOWS\system32\spool\prtprocs\x64\DEMOvok.dll)";
    // The library's own handle; set by LoadedLibrary. Null: any handle that is not the host's.
    HMODULE libraryModule = nullptr;
    // A path that GetModuleFileNameA cuts has no NUL at its end, as on systems up to XP.
    bool cutPathsHaveNoEnd = false;
    bool hasHostModule = true;  // GetModuleHandleA(null) finds the host
    ConfigLibrary config;

    // Entry points and libraries that this machine does not have.
    void hideFunction(const std::string& name) { hidden_.insert(name); }
    void hideLibrary(const std::string& file) { hiddenLibraries_.insert(file); }
    bool hasFunction(const std::string& name) const { return !hidden_.contains(name); }
    // Loads of the configuration library by that path that were not freed.
    size_t countLoaded(const std::string& path) const;

    // For the substitutes.
    struct Loaded {
        std::string path;
        size_t count = 0;
        HMODULE handle = nullptr;
    };
    // The library's handle, or null when that path leads to none.
    HMODULE load(System& system, const std::string& path);
    // A loaded configuration library; null for any other handle.
    Loaded* at(HMODULE handle);

  private:
    bool exists(System& system, const std::string& path) const;

    std::map<std::string, Loaded, IgnoringCase> loaded_;
    std::set<std::string> hidden_;
    std::set<std::string, IgnoringCase> hiddenLibraries_;
};

}  // namespace vok::test
