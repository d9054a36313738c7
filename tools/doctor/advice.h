// What is to be done about each finding. The anchors are those of docs/troubleshooting.md and stay
// as they are from version to version.
#ifndef VOK_TOOLS_DOCTOR_ADVICE_H
#define VOK_TOOLS_DOCTOR_ADVICE_H

#include <array>
#include <string>

namespace vok::doctor {

// What comes of a fault; the first is the worst.
enum class Effect { NothingPrints, NobodyAsked, JobsWait, NoLog, None };

struct Advice {
    const char* anchor;
    const char* cure;
    Effect effect;
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
    ConfigSeveral,
    BaseKeyMissing,
    BaseKeyAccess,
    LogOff,
    LogMasked,
    OptionType,
    OptionsNotSet,
    LogNotWritable,
    LogTooLarge,
    LogLocked,
    PrinterMissing,
    PrinterUnnamed,
    PrinterPaused,
    JobStuck,
    ProcessorMissing,
    ProcessorOfSystem,
    ProcessorForeign,
    PrefixMissing,
    PrefixWrong,
    DriverFolder,
    BlankInPath,
    CompanionMissing,
    CompanionNotProgram,
    FileCut,
    DriverFiles,
    PackageVersions,
    NoConsole,
    WrongSession,
    NoUserToken,
    TokenPrivilege,
    NoEnvironment,
    WindowMissing,
    WindowSilent,
    MutexMissing,
    MutexForeign,
    PipeTaken,
    CompanionNotStarted,
    CompanionDied,
    CompanionSilent,
    PipeNotOpened,
    Count
};

const Advice& adviceFor(Trouble trouble);

// "jobs that print without asking the companions": what a person sees of the effect.
const char* toText(Effect effect);

// "docs/troubleshooting.md#" and the anchor.
std::string pageOf(const Advice& advice);

}  // namespace vok::doctor

#endif
