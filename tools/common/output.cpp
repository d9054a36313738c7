#include "common/output.h"

#include <cstdio>
#include <string>

namespace vok::tools {

void print(const std::string& text) {
    // The stream remembers what fails.
    static_cast<void>(std::fputs(text.c_str(), stdout));
    static_cast<void>(std::fflush(stdout));
}

bool isAllPrinted() {
    return std::ferror(stdout) == 0;
}

void complain(const std::string& text) {
    static_cast<void>(std::fputs(text.c_str(), stderr));
}

}  // namespace vok::tools
