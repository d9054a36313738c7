// What the ways of starting NEMB have in common.
#pragma once

#include "support/name_buffer.h"

namespace vok {

// Class and title of NEMB's window; the title is the class followed by the printer's name.
NameBuffer nembClass(const NameBuffer& prefix);
NameBuffer nembTitle(const NameBuffer& prefix, const char* friendlyName);

// What follows the program's name on its command line.
void appendNembArguments(NameBuffer& commandLine, const char* friendlyName);

void logLaunchingNemb(const NameBuffer& commandLine);

}  // namespace vok
