#include "faults/scenario.h"

namespace vok::test {

void prepareMachine(System& system, const Scenario& scenario) {
    system.greedyBuffers = true;
    system.clock.stepPerRead = scenario.logging == Logging::uncached ? 0 : 1;
    system.addPrinter("Office");
    if (scenario.logging == Logging::none) {
        return;
    }
    system.installConfig();
    if (scenario.writesLog()) {
        system.startLog();
    }
    if (scenario.logging == Logging::common) {
        system.registry.setNumber(system.loggerKey(), "CommonLog", 1);
    }
    if (scenario.logging == Logging::critical) {
        system.registry.deny(system.loggerKey());
    }
}

LONG perform(const Exports& library, const Step& step, Job& job) {
    VKDATA& record = job.record();
    const auto* data = static_cast<const BYTE*>(job.dralBlock());
    switch (step.which) {
        case Export::launch:
            return library.launchXFiles(job.printer(), job.port(), &record);
        case Export::dral:
            return library.sendDralMsg(job.dralBlock(), step.messageId, &record);
        case Export::nemb:
            return library.sendNembMsg(job.nembBlock(), step.messageId, &record);
        case Export::messageToWindow:
            return static_cast<LONG>(library.sendMsgEx(job.printer(), record.hDRAL, VOK_MODE_WINDOW,
                                                       step.messageId, data, 36));
        case Export::messageToPipe:
            return static_cast<LONG>(library.sendMsgEx(job.printer(), record.hDRAL, VOK_MODE_PIPE,
                                                       step.messageId, data, 36));
    }
    return 0;
}

}  // namespace vok::test
