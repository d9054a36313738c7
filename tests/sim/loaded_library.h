// The DLL as it ships, loaded with every import replaced. Each object is an instance of its own.
#pragma once
#include <vok/vok.h>

#include <map>
#include <optional>
#include <string>

#include "import_table.h"

namespace vok::test {

// Any DLL, from a fresh copy: imports filled with substitutes, or else with the real functions.
class LoadedModule {
  public:
    // `overrides` go before the simulation's substitutes. Throws std::runtime_error when the file
    // cannot be copied or loaded.
    LoadedModule(const std::string& file, const std::string& asFileName,
                 const std::map<std::string, void*>& overrides = {});
    ~LoadedModule();  // detaches (when attached) and frees
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    HMODULE module() const { return module_; }
    const ImportTable& imports() const { return *imports_; }
    // Calls the entry point; attach and detach remember what was done.
    // `as`: the handle that it is told; null: its own.
    BOOL callEntryPoint(DWORD reason, HMODULE as = nullptr);
    bool attach();
    void detach();
    bool isAttached() const { return attached_; }
    // An export by name; throws std::runtime_error when there is none.
    template <class F>
    F function(const char* name) const {
        return reinterpret_cast<F>(reinterpret_cast<void*>(address(name)));
    }

  private:
    FARPROC address(const char* name) const;
    void load(const std::string& file, const std::string& asFileName);
    void fillImports(const std::map<std::string, void*>& overrides);
    void unload();

    std::string folder_;
    std::string copy_;
    HMODULE module_ = nullptr;
    std::optional<ImportTable> imports_;
    bool attached_ = false;
};

// Where the DLL under test lies: VOK_TEST_DLL in the environment, or the build's product.
std::string productDll();

// The DLL that ships: another one when the tests' own is built with checks or counters.
std::string shippedDll();

// The library: loaded, attached, its exports at hand.
class LoadedLibrary : public LoadedModule {
  public:
    explicit LoadedLibrary(const std::string& asFileName = VOK_MODEL_PREFIX "vok.dll");

    VOKLaunchXFilesFn launchXFiles;
    VOKSendMsgFn sendDralMsg;
    VOKSendMsgFn sendNembMsg;
    VOKSendMsgExFn sendMsgEx;
    VOKGetFn getDral;
    VOKGetFn getNemb;
};

}  // namespace vok::test
