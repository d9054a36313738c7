// What the reader has to say about a log: stable names, each with its place in
// docs/troubleshooting.md.
#ifndef VOK_LOG_FINDINGS_H
#define VOK_LOG_FINDINGS_H

#include <cstdint>
#include <span>
#include <string>

namespace vok::log {

enum class Weight : std::uint8_t {
    Note,     // worth knowing
    Warning,  // went otherwise than it should, and the job was served all the same
    Problem,  // a document was not printed, or a companion did not hear of an event
};

// In the order of findings(), which is that of a job's way.
enum class FindingId : std::uint8_t {
    LibraryNotLoaded,
    LibraryNotUnloaded,
    Registry,
    NoModuleName,
    DriverDirectory,
    PrinterNotOpened,
    NoPrefixData,
    NoUserToken,
    NoEnvironment,
    StartAsUserFailed,
    StartFailed,
    NotStarted,
    PipeNotMade,
    NoWindowYet,
    WindowNotFound,
    LaunchFailed,
    LaunchUnfinished,
    NoLaunch,
    NotConnected,
    StartupTimeout,
    StartupWaitFailed,
    NoWindow,
    NoHandle,
    NotOpen,
    Refused,
    NotHandedOn,
    StillWaiting,
    NoAnswer,
    SlowAnswer,
    ManyWaits,
    LongStartup,
    SlowHost,
    UnusualReply,
    UnknownEvent,
    InvalidMessage,
    LibraryException,
    NotClosed,
    JobSilent,
    JobOpen,
    MixedJobs,
    TornLines,
    ForeignLines,
    UnknownTexts,
    NoClock,
    ClockBack,
    ClockJump,
    NoDetails,
    FileDamaged,
    JobsCutShort,
};

struct FindingText {
    FindingId id;
    const char* name;  // also the anchor
    Weight weight;
    const char* title;
    const char* meaning;
    const char* action;
};

// One text for every id, in their order.
std::span<const FindingText> findings();

const FindingText& textOf(FindingId id);
const char* toText(Weight weight);

// Where the finding is explained.
std::string pageOf(FindingId id);

// The section of docs/troubleshooting.md that explains all findings, as Markdown.
std::string findingsAsMarkdown();

}  // namespace vok::log

#endif
