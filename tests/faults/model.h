// What the exports should answer and leave in the record, worked out from what the system answered.
#pragma once
#include <string>
#include <vector>

#include "faults/scenario.h"
#include "faults/trace.h"

namespace vok::test {

// Follows the recorded calls of one scenario step by step: each call that decides something has to
// be the one that is due, and results and record have to follow from what those calls returned.
// What the logging does in between is none of its business. Knows the scenarios' machine: its
// printer, its companions' names, its computer's name.
class Model {
  public:
    Model(const System& system, const Scenario& scenario, const VKDATA& before)
        : os_(system.os), port_(scenario.port), trace_(system), record_(before) {}

    // The result of one step.
    LONG perform(const Step& step);
    // Whether the last step could as well have answered 0: a reply of three zero bytes.
    bool mayBeZero() const { return mayBeZero_; }

    const VKDATA& record() const { return record_; }
    std::string problem() const { return trace_.problem(); }

  private:
    // The systems as the library tells them apart.
    enum class Family { of9x, withoutSessions, withSessions };
    Family family();

    // launch_model.cpp
    LONG launch();
    bool isApart();
    HANDLE startDral();
    HANDLE startDralByPipe();
    HANDLE startDralByMessages();
    HANDLE startNemb();
    HANDLE startNembByPipe();
    HANDLE startNembByMessages();
    HANDLE start9x(bool dral);
    HANDLE makePipe(const char* name);
    HANDLE closePrinter(HANDLE result);
    void driverDirectory();

    // start_model.cpp
    bool load(const char* library);
    bool lookUp(const char* function);
    std::string localPort();
    bool userToken(bool& forbidden);
    HANDLE launchProgram(bool dral);
    HANDLE createAsUser(bool dral);
    void store(bool dral, const std::string& result);

    // event_model.cpp
    LONG_PTR dralXp(DWORD id);
    LONG_PTR dralByWindow(DWORD id);
    LONG_PTR dralByPipe(DWORD id);
    LONG_PTR dral9x(DWORD id);
    LONG_PTR nembXp(DWORD id);
    LONG_PTR nembByPipe(DWORD id);
    LONG_PTR nembByWindow(DWORD id);
    void findDral();
    void findNemb();
    LONG_PTR send(HANDLE window, DWORD id, size_t size);
    LONG_PTR exchangeDral();
    LONG_PTR exchangeNemb();
    LONG_PTR read(HANDLE pipe, LONG reply);
    bool connect(HANDLE pipe);
    void closePipe(HANDLE& slot);
    bool isOpen() const { return (record_.epDoc & VOK_EPDOC_OPENJOB) != 0; }
    void setOpen(bool open);
    LONG message(const Step& step);

    OsRelease os_;
    std::string port_;
    Trace trace_;
    VKDATA record_;
    bool mayBeZero_ = false;
};

// Compares what happened with the model.
void checkModel(const System& system, const Scenario& scenario, const VKDATA& before,
                const std::vector<LONG>& results, const VKDATA& after,
                std::vector<std::string>& problems);

}  // namespace vok::test
