#include "launch/nemb_names.h"

#include <vok/companion.h>

#include "logging/log_line.h"
#include "support/text.h"

namespace vok {

NameBuffer nembClass(const NameBuffer& prefix) {
    NameBuffer name = prefix;
    name << VOK_NEMB_TITLE;
    return name;
}

NameBuffer nembTitle(const NameBuffer& prefix, const char* friendlyName) {
    NameBuffer title = nembClass(prefix);
    title << friendlyName;
    return title;
}

void appendNembArguments(NameBuffer& commandLine, const char* friendlyName) {
    commandLine << VOK_ARG_PRINTER << friendlyName << VOK_ARG_JOB;
}

void logLaunchingNemb(const NameBuffer& commandLine) {
    logLine({"Launching Nmeb", ", Path = ", commandLine.text()});
}

}  // namespace vok
