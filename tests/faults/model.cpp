#include "faults/model.h"

#include <cstring>
#include <string>
#include <vector>

namespace vok::test {

Model::Family Model::family() {
    if (!succeeded(trace_.take("GetVersionExA"))) {
        return Family::withoutSessions;
    }
    if (os_.is9x()) {
        return Family::of9x;
    }
    return os_.isNtFrom(5, 1) ? Family::withSessions : Family::withoutSessions;
}

LONG Model::perform(const Step& step) {
    mayBeZero_ = false;
    // The making of a logger asks for this directory, too.
    while (trace_.nextIs("GetPrinterDriverDirectoryA")) {
        trace_.take("GetPrinterDriverDirectoryA");
    }
    switch (step.which) {
        case Export::launch:
            return launch();
        case Export::dral:
            return static_cast<LONG>(family() == Family::of9x ? dral9x(step.messageId)
                                                              : dralXp(step.messageId));
        case Export::nemb:
            // The 9x way does not search for a window; all scenarios there have one.
            return static_cast<LONG>(family() == Family::of9x ? nembByWindow(step.messageId)
                                                              : nembXp(step.messageId));
        case Export::messageToWindow:
        case Export::messageToPipe:
            return message(step);
    }
    return 0;
}

void checkModel(const System& system, const Scenario& scenario, const VKDATA& before,
                const std::vector<LONG>& results, const VKDATA& after,
                std::vector<std::string>& problems) {
    Model model(system, scenario, before);
    for (size_t i = 0; i < results.size(); ++i) {
        const LONG wanted = model.perform(scenario.steps[i]);
        if (results[i] != wanted && !(model.mayBeZero() && results[i] == 0)) {
            problems.push_back("step " + std::to_string(i + 1) + " answered " +
                               std::to_string(results[i]) + " instead of " +
                               std::to_string(wanted));
        }
    }
    if (!model.problem().empty()) {
        problems.push_back(model.problem());
    }
    if (std::memcmp(&after, &model.record(), sizeof(after)) != 0) {
        problems.emplace_back("the record is not as it should be");
    }
}

}  // namespace vok::test
