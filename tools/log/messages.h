// The texts that the library writes, and what each of them tells about a job.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vok::log {

// What the values of an enumeration are called, in their order.
template <typename Named>
inline constexpr std::nullptr_t words = nullptr;

template <typename Named>
const char* toText(Named value) {
    const auto& texts = words<Named>;
    return texts[static_cast<std::size_t>(value)];
}

// A companion, or none: some texts of the library serve both.
enum class Side : std::uint8_t { Dral, Nemb, None };
template <>
inline constexpr const char* words<Side>[] = {"DRAL", "NEMB", "?"};

enum class Event : std::uint8_t { Open, Page, Close, Cancel, None };
template <>
inline constexpr const char* words<Event>[] = {"OPENJOB", "PAGE", "CLOSEJOB", "CANCELJOB", "other"};

enum class Route : std::uint8_t { None, Pipe, Window, Window9x };
template <>
inline constexpr const char* words<Route>[] = {"?", "pipe", "message", "9x"};

enum class Step : std::uint8_t {
    Unknown,
    TraceEnter,
    TraceExit,
    // The launch.
    LaunchBegin,
    LaunchTrue,
    LaunchFalse,
    LaunchDetail,  // belongs to a launch and tells nothing more
    RouteChosen,
    PrinterNotOpened,
    NoPrefixData,
    Running,
    Path,  // the companion does not run and is about to be started
    Launching,
    StartFailed,
    WindowAfterStart,
    PipeReady,
    Window9xFound,
    Window9xSearched,
    UserToken,
    StartByWinExec,
    StartAsUser,
    AsUserFailed,
    CreateProcess,
    CreateProcessFailed,
    NoModuleName,
    // The events.
    Asked,       // written before the companion is asked
    AskedAfter,  // the same form, written after it answered
    Reply,
    Loop,
    NoHandle,  // the window is searched again
    StartupWait,
    StartupTimeout,
    StartupWaitFailed,
    StartupWaitEnd,
    NoWindow,
    NotOpen,
    NotConnected,
    NoRecord,
    Trail,  // after the reply
    Pause,  // the library sleeps for a second
    JobEndTime,
    UnknownEvent,
    AnyMessage,
    AnyMessageInvalid,
    // Either.
    LibraryNotLoaded,
    LibraryNotUnloaded,
    NoDriverDirectory,
    RegistryFailed,
    LibraryException,
    LibraryDetail,
};

struct KnownText {
    std::string_view start;
    bool exact = false;  // nothing follows, but for blanks lost at the end
    Step step = Step::Unknown;
    Side side = Side::None;
    Event event = Event::None;
    Route route = Route::None;
};

struct Message {
    KnownText text;
    std::string_view value;  // what follows the known start
};

// All known texts, for those who compare them with the library's own.
std::span<const KnownText> knownTexts();

// Step::Unknown for a text that the library does not write.
Message recognise(std::string_view message);

}  // namespace vok::log
