// What the doctor found, in the order in which it looked.
#ifndef VOK_TOOLS_DOCTOR_REPORT_H
#define VOK_TOOLS_DOCTOR_REPORT_H

#include <string>
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
    void ok(const std::string& step, const std::string& value);
    // Worth knowing, and no fault.
    void note(const std::string& step, Trouble trouble, const std::string& value);
    void warn(const std::string& step, Trouble trouble, const std::string& value);
    void problem(const std::string& step, Trouble trouble, const std::string& value);

    // A problem where it stands in the way, else a warning.
    void complain(bool inTheWay, const std::string& step, Trouble trouble,
                  const std::string& value);

    const std::vector<Finding>& findings() const { return findings_; }
    std::size_t count(Level level) const;

    // The finding that explains most: of those with the worst effect the first, since what follows
    // is often its consequence; a warning only where there is no problem. Says so when there is
    // none.
    std::string cause() const;

    // One line for each finding, their counts, and the cause.
    std::string text() const;
    std::string json() const;

  private:
    const Finding* worst(Level level) const;

    std::vector<Finding> findings_;
};

}  // namespace vok::doctor

#endif
