// log_generator LINES: writes a log of at least so many lines to the standard output.

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "big_log.h"

int main(int count, char** words) {
    if (count != 2) {
        std::fputs("usage: log_generator LINES\n", stderr);
        return 2;
    }
    bool failed = false;
    vok::test::writeBigLog(
        [&](std::string_view line) {
            failed = std::fwrite(line.data(), 1, line.size(), stdout) != line.size() || failed;
        },
        std::strtoull(words[1], nullptr, 10));
    return failed || std::fflush(stdout) != 0 ? 1 : 0;
}
