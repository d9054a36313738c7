/**
 * @file exhausted.c
 * A consumer of the import library whose calls run out of memory, and which lives on: each
 * allocation of each working export fails once, then it and all that follow; and whole jobs are
 * driven with failures on their way. After each failure the library works as ever, for other
 * threads too. Exit status: 0 when all of that holds, else 1.
 */
#include "hooks.h"
#include "plain_c/guard.h"
#include "plain_c/job.h"

enum { ENDLESS = 1000 };

static FailAllocationFn failAllocation;
static FailedAllocationsFn failedAllocations;
static BYTE block[VOK_NEMB_BLOCK_SIZE] = "Demo Printer";
static VKDATA record;
static LONG caught, answered;

static HMODULE library(void) {
    return GetModuleHandleA(VOK_MODEL_PREFIX "vok.dll");
}

static void __cdecl launch(void* unused) {
    VOKLaunchXFiles("A printer with a name that takes memory", "A port with such a name", NULL);
    (void)unused;
}

/* Companions whose windows are gone: calls that end at once and have more to log than others. */
static void __cdecl tellDral(void* unused) {
    record.dralMode = VOK_MODE_WINDOW;
    record.hDRAL = (HANDLE)0x7FFFFFFF;
    record.epDoc = 0;
    VOKSendDralMsg(block, SM_OPENJOB, &record);
    (void)unused;
}

static void __cdecl tellNemb(void* unused) {
    record.nembMode = VOK_MODE_WINDOW;
    record.hNEMB = (HANDLE)0x7FFFFFFF;
    record.epDoc = VOK_EPDOC_OPENJOB;
    VOKSendNembMsg(block, SM_OPENJOB, &record);
    (void)unused;
}

static void __cdecl sendTo(void* unused) {
    VOKSendMsgEx("A printer with a name that takes memory", NULL, 0, WM_USER, block, 1);
    (void)unused;
}

typedef void(__cdecl* Part)(void*);
static const Part parts[] = {launch, tellDral, tellNemb, sendTo};
enum { PARTS = sizeof parts / sizeof parts[0] };

static DWORD WINAPI allOfThem(void* unused) {
    DWORD ended = 0;
    int part;
    for (part = 0; part < PARTS; ++part)
        ended += guarded(parts[part], unused) ? 1U : 0U;
    return ended;
}

/* All four, here and on another thread. */
static BOOL worksAsEver(void) {
    DWORD ended = 0;
    HANDLE thread = CreateThread(NULL, 0, allOfThem, NULL, 0, NULL);
    if (thread == NULL)
        return FALSE;
    WaitForSingleObject(thread, INFINITE);
    GetExitCodeThread(thread, &ended);
    CloseHandle(thread);
    return ended == PARTS && allOfThem(NULL) == PARTS;
}

static const char* sweep(Part part, BOOL forEver) {
    LONG k;
    for (k = 1; k < ENDLESS; ++k) {
        BOOL ended;
        LONG failures;
        if (!failAllocation(library(), k, forEver))
            return "the library's allocations can't be had";
        ended = guarded(part, NULL);
        failures = failedAllocations();
        failAllocation(library(), 0, FALSE);
        if (failures == 0)
            return ended && k > 1 ? NULL : "no allocation failed";
        ++*(ended ? &answered : &caught);
        if (!worksAsEver())
            return "the library does not work after a failure";
    }
    return "there is no end of allocations";
}

static const char* driveWith(const VokExports* vok, LONG k) {
    const char* wrong;
    LONG failures;
    failAllocation(library(), k, FALSE);
    wrong = driveJob(vok, "Demo Printer");
    failures = failedAllocations();
    failAllocation(library(), 0, FALSE);
    if (failures == 0)
        return "a job has fewer allocations than it should";
    if (wrong != NULL && lstrcmpA(wrong, "memory ran out") != 0)
        return wrong;
    return driveJob(vok, "Demo Printer");
}

static const char* findHooks(void) {
    HMODULE hooks = LoadLibraryA("contract_hooks.dll");
    if (hooks == NULL)
        return "no contract_hooks.dll";
    failAllocation = (FailAllocationFn)(void (*)(void))GetProcAddress(hooks, "failAllocation");
    failedAllocations =
        (FailedAllocationsFn)(void (*)(void))GetProcAddress(hooks, "failedAllocations");
    return failAllocation != NULL && failedAllocations != NULL ? NULL : "no hooks";
}

static const char* run(const VokExports* vok) {
    static const LONG inJobs[] = {1, 4, 9};
    const char* wrong = findHooks();
    int part;
    for (part = 0; part < PARTS && wrong == NULL; ++part) {
        wrong = sweep(parts[part], FALSE);
        if (wrong == NULL)
            wrong = sweep(parts[part], TRUE);
    }
    if (wrong == NULL && (caught == 0 || answered == 0))
        wrong = "not every kind of failure was seen";
    for (part = 0; part < 3 && wrong == NULL; ++part)
        wrong = driveWith(vok, inJobs[part]);
    return wrong;
}

int main(void) {
    VokExports vok;
    const char* wrong;
    vok.launch = VOKLaunchXFiles;
    vok.sendDral = VOKSendDralMsg;
    vok.sendNemb = VOKSendNembMsg;
    vok.sendMsgEx = VOKSendMsgEx;
    vok.getDral = (VOKGetFn)(void (*)(void))GetProcAddress(library(), VOK_EXPORT_GET_DRAL);
    vok.getNemb = (VOKGetFn)(void (*)(void))GetProcAddress(library(), VOK_EXPORT_GET_NEMB);
    wrong = run(&vok);
    say(wrong == NULL ? "lived on" : wrong);
    return wrong == NULL ? 0 : 1;
}
