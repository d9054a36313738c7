// The programs that run.
#ifndef VOK_TOOLS_DOCTOR_PROCESSES_H
#define VOK_TOOLS_DOCTOR_PROCESSES_H

#include <windows.h>

#include <string>

namespace vok::doctor {

// Id of a process whose program's file has that name, of whichever session; 0 when there is none.
DWORD processNamed(const std::string& fileName);

// "process 308, DEMODRAL.EXE": whose window that is.
std::string ownerOf(HWND window);

}  // namespace vok::doctor

#endif
