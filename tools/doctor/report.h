// What the doctor found, in the order in which it looked.
#ifndef VOK_TOOLS_DOCTOR_REPORT_H
#define VOK_TOOLS_DOCTOR_REPORT_H

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "advice.h"

namespace vok::doctor {

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

#endif
