/**
 * @file main.c
 * vok-plain-c [PRINTER]
 *
 * A job without a document for a printer ("Demo Printer" unless named), with all six exports looked
 * up by name. That is how a C program of any compiler calls the library, and with the platform's
 * compiler the only way to the two getters, whose names only its C++ makes by itself. Exit status:
 * 0 when the job went well, else 1.
 */
#include "job.h"

static FARPROC find(HMODULE library, const char* name, BOOL* all) {
    FARPROC address = GetProcAddress(library, name);
    *all = *all && address != NULL;
    return address;
}

static BOOL findAll(HMODULE library, VokExports* vok) {
    BOOL all = TRUE;
    vok->launch = (VOKLaunchXFilesFn)(void (*)(void))find(library, VOK_EXPORT_LAUNCH_XFILES, &all);
    vok->sendDral = (VOKSendMsgFn)(void (*)(void))find(library, VOK_EXPORT_SEND_DRAL_MSG, &all);
    vok->sendNemb = (VOKSendMsgFn)(void (*)(void))find(library, VOK_EXPORT_SEND_NEMB_MSG, &all);
    vok->sendMsgEx = (VOKSendMsgExFn)(void (*)(void))find(library, VOK_EXPORT_SEND_MSG_EX, &all);
    vok->getDral = (VOKGetFn)(void (*)(void))find(library, VOK_EXPORT_GET_DRAL, &all);
    vok->getNemb = (VOKGetFn)(void (*)(void))find(library, VOK_EXPORT_GET_NEMB, &all);
    return all;
}

/* What stands behind the program's name on the command line. */
static const char* argument(void) {
    const char* at = GetCommandLineA();
    BOOL quoted = FALSE;
    for (; *at != '\0' && (quoted || *at != ' '); ++at) {
        if (*at == '"')
            quoted = !quoted;
    }
    while (*at == ' ')
        ++at;
    return at;
}

int main(void) {
    const char* printer = argument();
    const char* wrong = "the library lacks an export";
    VokExports vok;
    HMODULE library = LoadLibraryA(VOK_MODEL_PREFIX "vok.dll");
    if (library == NULL) {
        say("the library can't be loaded");
        return 1;
    }
    if (findAll(library, &vok))
        wrong = driveJob(&vok, *printer != '\0' ? printer : "Demo Printer");
    FreeLibrary(library);
    say(wrong == NULL ? "all six exports answered" : wrong);
    return wrong == NULL ? 0 : 1;
}
