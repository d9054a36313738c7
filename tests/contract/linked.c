/**
 * @file linked.c
 * linked message|pipe
 *
 * A consumer of the import library, C and C++ alike, with no C runtime: drives a job through all
 * six exports. The headers come before windows.h, which has to be whole all the same. Exit status:
 * 0 when the job went well, else 1.
 */
#include <vok/companion.h>
#include <vok/config_library.h>
#include <windows.h>

#include "hooks.h"
#include "plain_c/job.h"

/* Gone where a header of ours has cut windows.h short. */
static BOOL canOpen(char* printer) {
    HANDLE handle = NULL;
    return OpenPrinterA(printer, &handle, NULL) && ClosePrinter(handle);
}

static HMODULE library(void) {
    return GetModuleHandleA(VOK_MODEL_PREFIX "vok.dll");
}

/* The platform's C has no way to write the getters' names. */
static void findGetters(VokExports* vok) {
#ifdef VOK_GETTER
    vok->getDral = VOKGetDral;
    vok->getNemb = VOKGetNemb;
#else
    vok->getDral = (VOKGetFn)(void (*)(void))GetProcAddress(library(), VOK_EXPORT_GET_DRAL);
    vok->getNemb = (VOKGetFn)(void (*)(void))GetProcAddress(library(), VOK_EXPORT_GET_NEMB);
#endif
}

/* Where everything runs in one session, the pipe route needs a library that believes otherwise. */
static BOOL takeRoute(void) {
    const char* line = GetCommandLineA();
    HMODULE mover;
    MoveToSessionZeroFn move;
    if (lstrcmpA(line + lstrlenA(line) - 4, "pipe") != 0)
        return TRUE;
    mover = LoadLibraryA("contract_hooks.dll");
    move = mover == NULL
               ? NULL
               : (MoveToSessionZeroFn)(void (*)(void))GetProcAddress(mover, "moveToSessionZero");
    return move != NULL && move(library());
}

int main(void) {
    static char printer[] = "Demo Printer";
    const char* wrong = "the printer can't be opened";
    VokExports vok;
    vok.launch = VOKLaunchXFiles;
    vok.sendDral = VOKSendDralMsg;
    vok.sendNemb = VOKSendNembMsg;
    vok.sendMsgEx = VOKSendMsgEx;
    findGetters(&vok);
    if (!takeRoute())
        wrong = "the route can't be taken";
    else if (canOpen(printer))
        wrong = driveJob(&vok, printer);
    say(wrong == NULL ? "all six exports answered" : wrong);
    return wrong == NULL ? 0 : 1;
}
