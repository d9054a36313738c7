#include "simulated_process.h"

#include "real.h"
#include "substitutes.h"

namespace vok::test {

SimulatedProcess::SimulatedProcess() : table_(real.getModuleHandleA(nullptr)) {
    for (const Import& import : table_.imports()) {
        if (void* function = substituteFor(import.name)) {
            table_.set(import, function);
        }
    }
}

}  // namespace vok::test
