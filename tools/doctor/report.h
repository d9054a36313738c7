// What the doctor found, in the order in which it looked, and what is to be done about it.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vok::doctor {

// What comes of a fault; the first is the worst.
enum class Effect { NothingPrints, NobodyAsked, JobsWait, NoLog, None };

struct Advice {
    const char* anchor;
    const char* cure;
    Effect effect = Effect::NobodyAsked;  // what most faults come to
};

using enum Effect;

// The anchors are those of docs/troubleshooting.md and stay as they are from version to version.
inline constexpr Advice advices[] = {
    {"library-missing", "install the printer driver, or name the DLL on the command line"},
    {"library-renamed", "give the DLL back the name it was built under"},
    {"library-unloadable", "install a DLL of this system's kind that is whole"},
    {"library-foreign", "name the library of the printer driver"},
    {"library-several", "name the DLL that is meant on the command line", None},
    {"configuration-missing", "put the configuration library into the driver folder", NoLog},
    {"configuration-foreign", "install the configuration library of this model", NoLog},
    {"configuration-refuses", "install the configuration library of this version", NoLog},
    {"configuration-several", "leave the configuration library in one place, the driver folder",
     NoLog},
    {"base-key-missing", "install the printer software's settings; the library makes no base key",
     NoLog},
    {"base-key-access", "run the doctor as administrator, and let the spooler write the key",
     NoLog},
    {"log-off", "vok-doctor --log on, then repeat what went wrong", NoLog},
    {"log-masked", "vok-doctor --log on, or set the mask's bits 2 and 8", NoLog},
    {"option-type", "delete the value; the library makes it anew as a 32-bit number", NoLog},
    {"options-not-set", "see to the configuration library first", NoLog},
    {"log-not-writable", "let the spooler write the file and its folder", NoLog},
    {"log-too-large", "move the log away; the library makes a new one", NoLog},
    {"log-locked", "end the program that holds the log's mutex: every logging call waits for it",
     NothingPrints},
    {"printer-missing", "add the printer, or name it as OpenPrinter takes it", NothingPrints},
    {"printer-unnamed", "say which printer is meant: --printer NAME"},
    {"printer-paused", "resume the printer", NothingPrints},
    {"job-stuck", "see what the job waits for, or delete it", JobsWait},
    {"processor-missing", "install the print processor of the driver anew", NothingPrints},
    {"processor-of-system", "set the printer to the driver's print processor"},
    {"processor-foreign", "see whether the printer has the driver's print processor"},
    {"prefix-missing", "write the model prefix into the printer data 'Printer Prefix'",
     NothingPrints},
    {"prefix-wrong", "make the printer data 'Printer Prefix' and the DLL's name alike",
     NothingPrints},
    {"driver-folder", "install the printer driver: the spooler has no such folder"},
    {"blank-in-path", "keep programs away that an unquoted path with blanks could mean"},
    {"companion-missing", "put the companion's file into that folder"},
    {"companion-not-program", "install the companion's file anew: it is no 64-bit program"},
    {"file-cut", "install the file anew: it is cut short"},
    {"file-cut", "install the file anew: it is cut short", NoLog},
    {"driver-files", "install the printer driver anew", NothingPrints},
    {"package-versions", "install all files of one version"},
    {"no-console", "log on at the console: companions are started there"},
    {"wrong-session", "work at the console: companions are started in its session"},
    {"no-user-token", "log a user on at the console, and let the terminal services run"},
    {"token-privilege", "run the doctor as LocalSystem to see what the spooler would get", None},
    {"no-environment", "repair the user's profile: nothing is started without its environment"},
    {"window-missing", "end the companion; the next job starts it anew", NothingPrints},
    {"window-silent", "end the companion's process; the next job starts it anew", NothingPrints},
    {"mutex-missing", "have the companion hold its mutex: each job starts another one"},
    {"mutex-foreign", "end the program that holds the mutex: the companion is not started",
     NothingPrints},
    {"pipe-taken", "end the program that has made the pipe"},
    {"companion-not-started", "start the command line by hand and see what the system says"},
    {"companion-died", "start the command line by hand; look for missing DLLs and crash reports"},
    {"companion-silent", "run vok-companion-check on the companion", NothingPrints},
    {"pipe-not-opened", "run vok-companion-check on the companion", NothingPrints},
};

// What is wrong, named by the anchor of its advice. One without advice does not compile.
struct Trouble {
    // Said by its anchor alone, or by an effect too where the anchor has several.
    // cppcheck-suppress noExplicitConstructor
    consteval Trouble(const char* anchor, Effect effect = None)
        : advice(std::ranges::find_if(advices, [&](const Advice& it) {
              return std::string_view(anchor) == it.anchor &&
                     (effect == None || effect == it.effect);
          })) {
        if (advice == std::end(advices)) {
            throw "no advice has this anchor";
        }
    }

    const Advice* advice;
};

enum class Level { Ok, Note, Warning, Problem };

struct Finding {
    Level level;
    std::string step;
    std::string value;
    const Advice* advice;  // null when all is well
};

class Report {
  public:
    void add(Finding finding) { findings_.push_back(std::move(finding)); }
    std::ptrdiff_t count(Level level) const;

    // The finding that explains most: of those with the worst effect the first, since what follows
    // is often its consequence; a warning only where there is no problem. Says so when there is
    // none.
    std::string cause() const;

    // One line for each finding, their counts, and the cause.
    std::string text() const;
    std::string json() const;

  private:
    std::vector<Finding> findings_;
};

// One step of the examination, and what it finds.
class Step {
  public:
    Step(Report& report, std::string name) : report_(report), name_(std::move(name)) {}

    template <typename... Values>
    void ok(fmt::format_string<Values...> text, Values&&... values) const {
        report_.add(
            {Level::Ok, name_, fmt::format(text, std::forward<Values>(values)...), nullptr});
    }

    // Worth knowing, and no fault.
    template <typename... Values>
    void note(Trouble trouble, fmt::format_string<Values...> text, Values&&... values) const {
        report_.add({Level::Note, name_, fmt::format(text, std::forward<Values>(values)...),
                     trouble.advice});
    }

    template <typename... Values>
    void warn(Trouble trouble, fmt::format_string<Values...> text, Values&&... values) const {
        complain(false, trouble, text, std::forward<Values>(values)...);
    }

    template <typename... Values>
    void problem(Trouble trouble, fmt::format_string<Values...> text, Values&&... values) const {
        complain(true, trouble, text, std::forward<Values>(values)...);
    }

    // A problem where it stands in the way, else a warning.
    template <typename... Values>
    void complain(bool inTheWay, Trouble trouble, fmt::format_string<Values...> text,
                  Values&&... values) const {
        report_.add({inTheWay ? Level::Problem : Level::Warning, name_,
                     fmt::format(text, std::forward<Values>(values)...), trouble.advice});
    }

  private:
    Report& report_;
    std::string name_;
};

}  // namespace vok::doctor
