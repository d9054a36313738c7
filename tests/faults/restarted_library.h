// The DLL as it ships, loaded once and started anew for every run: hundreds of thousands of runs
// have no time for as many loads.
#pragma once
#include <vok/vok.h>

#include <map>
#include <string>
#include <vector>

#include "sim/sim.h"

namespace vok::test {

struct Exports {
    explicit Exports(const LoadedModule& module);
    VOKLaunchXFilesFn launchXFiles;
    VOKSendMsgFn sendDralMsg;
    VOKSendMsgFn sendNembMsg;
    VOKSendMsgExFn sendMsgEx;
    VOKGetFn getDral;
    VOKGetFn getNemb;
};

class RestartedLibrary {
  public:
    explicit RestartedLibrary(const std::map<std::string, void*>& overrides = {});
    // The one that most tests share, without overrides.
    static RestartedLibrary& shared();

    // All data as they were right after loading, then attached; throws std::runtime_error when the
    // entry point refuses.
    void start();
    // Detached; what the runtime keeps for itself is given back to the system.
    void stop();

    const Exports& exports() const { return exports_; }

  private:
    struct Section {
        BYTE* begin;
        std::vector<BYTE> bytes;
    };
    void rememberData();

    LoadedModule module_;
    Exports exports_;
    std::vector<Section> data_;
};

// Started for as long as it lives.
class Started {
  public:
    explicit Started(RestartedLibrary& library = RestartedLibrary::shared()) : library_(library) {
        library_.start();
    }
    ~Started() { library_.stop(); }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;
    const Exports* operator->() const { return &library_.exports(); }
    const Exports& operator*() const { return library_.exports(); }

  private:
    RestartedLibrary& library_;
};

}  // namespace vok::test
