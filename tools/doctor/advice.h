// What is to be done about each finding. The anchors are those of docs/troubleshooting.md and stay
// as they are from version to version.
#ifndef VOK_TOOLS_DOCTOR_ADVICE_H
#define VOK_TOOLS_DOCTOR_ADVICE_H

#include <array>
#include <string>

namespace vok::doctor {

struct Advice {
    const char* anchor;
    const char* cure;
};

enum class Trouble {
    LibraryMissing,
    LibraryRenamed,
    LibraryUnloadable,
    LibraryForeign,
    LibrarySeveral,
    ConfigMissing,
    ConfigForeign,
    ConfigRefuses,
    BaseKeyMissing,
    BaseKeyAccess,
    LogOff,
    LogMasked,
    OptionType,
    LogNotWritable,
    LogLocked,
    PrinterMissing,
    PrinterUnnamed,
    PrinterPaused,
    PrefixMissing,
    PrefixWrong,
    DriverFolder,
    BlankInPath,
    CompanionMissing,
    CompanionNotProgram,
    NoConsole,
    WrongSession,
    NoUserToken,
    TokenPrivilege,
    NoEnvironment,
    WindowMissing,
    MutexMissing,
    PipeTaken,
    CompanionNotStarted,
    CompanionDied,
    CompanionSilent,
    PipeNotOpened,
    Count
};

const Advice& adviceFor(Trouble trouble);

// "docs/troubleshooting.md#" and the anchor.
std::string pageOf(const Advice& advice);

}  // namespace vok::doctor

#endif
