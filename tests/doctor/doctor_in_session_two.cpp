// The doctor, asked by a user who sits in session 2: doctor_in_session_two PRINTER. All programs of
// the test machine share one session, so the system's answer is replaced.
#include <windows.h>

#include <bit>
#include <cstdio>

#include "common/import_table.h"
#include "doctor.h"

namespace {

BOOL WINAPI sessionTwo(DWORD /*process*/, DWORD* session) {
    *session = 2;
    return TRUE;
}

}  // namespace

int main(int count, char** words) {
    if (count != 2 || !vok::sample::replaceImport(GetModuleHandleA(nullptr), "ProcessIdToSessionId",
                                                  std::bit_cast<FARPROC>(&sessionTwo))) {
        return 2;
    }
    vok::doctor::Options options;
    options.printer = words[1];
    options.spoolerSession = 0;
    const vok::doctor::Report report = vok::doctor::examine(options);
    std::fputs(report.text().c_str(), stdout);
    return report.count(vok::doctor::Level::Problem) == 0 ? 0 : 1;
}
