// The whole examination.
#ifndef VOK_TOOLS_DOCTOR_DOCTOR_H
#define VOK_TOOLS_DOCTOR_DOCTOR_H

#include "command_line.h"
#include "report.h"

namespace vok::doctor {

// Looks at the machine as the library does. Once in a process: it takes the place of the spooler's
// session for good.
Report examine(const Options& options);

}  // namespace vok::doctor

#endif
