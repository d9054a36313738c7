#include "job.h"

#include <vok/companion.h>

#include "guard.h"

/* What the demo's companions expect, as common/agreement.h has it for C++. */
enum {
    SM_ENDPAGE = 1136,
    EVENT_IN_NEMB_BLOCK = VOK_NAME_SIZE,
    TITLE_SUFFIX_SIZE = 255 - (sizeof VOK_DRAL_HIDDEN - 1) + 1
};

enum { JOB = 1, PAGE = 1 };

enum { LAUNCH_TRIES = 120, LAUNCH_PAUSE = 250, ASK_TRIES = 60, ASK_PAUSE = 500 };

/* One job at a time. Static, because large blocks on the stack need help of the C runtime. */
static VKDATA record;
static BYTE nembBlock[VOK_NEMB_BLOCK_SIZE];
static DWORD dralBlock[VOK_DRAL_BLOCK_SIZE / sizeof(DWORD)];

void say(const char* text) {
    DWORD written = 0;
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    WriteFile(output, text, (DWORD)lstrlenA(text), &written, NULL);
    WriteFile(output, "\r\n", 2, &written, NULL);
}

/* Volatile, or compilers make a call of the C runtime's memset of it. */
static void clearRecord(void) {
    volatile BYTE* bytes = (volatile BYTE*)&record;
    DWORD at;
    for (at = 0; at < sizeof record; ++at)
        bytes[at] = 0;
}

static void closeHandle(HANDLE* handle) {
    if (*handle != NULL && *handle != INVALID_HANDLE_VALUE)
        CloseHandle(*handle);
    *handle = NULL;
}

/* Before a launch is tried again: the next one makes new pipes and finds the windows anew. */
static void dropCompanions(void) {
    if (record.dralMode == VOK_MODE_PIPE)
        closeHandle(&record.hDRAL);
    if (record.nembMode == VOK_MODE_PIPE)
        closeHandle(&record.hNEMB);
    record.hDRAL = NULL;
    record.hNEMB = NULL;
}

static BOOL launch(const VokExports* vok, const char* printer) {
    int tries;
    for (tries = 0; tries < LAUNCH_TRIES; ++tries) {
        if (vok->launch(printer, "LPT1:", &record))
            return TRUE;
        dropCompanions();
        Sleep(LAUNCH_PAUSE);
    }
    return FALSE;
}

static void fillBlocks(DWORD event, DWORD page) {
    DWORD* nemb = (DWORD*)(void*)(nembBlock + EVENT_IN_NEMB_BLOCK);
    dralBlock[0] = nemb[0] = event;
    dralBlock[1] = nemb[1] = JOB;
    dralBlock[2] = nemb[2] = page;
}

/* Tells a companion and, for as long as it is busy, asks again. */
static LONG tell(VOKSendMsgFn send, const void* block, DWORD event) {
    LONG reply = WAITPRINT;
    int tries;
    for (tries = 0; tries < ASK_TRIES && reply == WAITPRINT; ++tries) {
        if (tries > 0)
            Sleep(ASK_PAUSE);
        /* On the pipe route the flag stands as soon as the opening was tried. */
        if (event == SM_OPENJOB && block == dralBlock)
            record.epDoc &= ~(DWORD)VOK_EPDOC_OPENJOB;
        reply = send(block, event, &record);
    }
    return reply;
}

static BOOL tellBoth(const VokExports* vok, DWORD event, DWORD page) {
    fillBlocks(event, page);
    return tell(vok->sendDral, dralBlock, event) == YESPRINT &&
           tell(vok->sendNemb, nembBlock, event) == YESPRINT;
}

/* Both hear of the end. On 9x DRAL's close takes the flag without which NEMB is not told. */
static BOOL endJob(const VokExports* vok, DWORD event) {
    BOOL nembFirst = record.dralMode == VOK_MODE_NONE;
    LONG dral, nemb = YESPRINT;
    fillBlocks(event, 0);
    if (nembFirst)
        nemb = tell(vok->sendNemb, nembBlock, event);
    dral = tell(vok->sendDral, dralBlock, event);
    if (!nembFirst)
        nemb = tell(vok->sendNemb, nembBlock, event);
    return dral == YESPRINT && nemb == YESPRINT;
}

/*
 * VOKSendMsgEx waits for no reply: the window gets a message, the pipe a whole frame, which a
 * companion answers. That answer has to be read, or it would be taken for the next event's.
 */
static BOOL endPage(const VokExports* vok, const char* printer) {
    HANDLE nemb = (HANDLE)vok->getNemb(&record);
    LONG reply = NOPRINT;
    DWORD count = 0;
    fillBlocks(SM_ENDPAGE, PAGE);
    if (!vok->sendMsgEx(printer, nemb, record.nembMode, SM_ENDPAGE, nembBlock, sizeof nembBlock))
        return FALSE;
    if (record.nembMode != VOK_MODE_PIPE)
        return TRUE;
    return ReadFile(nemb, &reply, sizeof reply, &count, NULL) && count == sizeof reply &&
           reply == YESPRINT;
}

static const char* openAndPrint(const VokExports* vok, const char* printer) {
    if (!launch(vok, printer))
        return "the companions could not be reached";
    if ((HANDLE)vok->getDral(&record) != record.hDRAL || record.hDRAL == NULL)
        return "DRAL's handle is not the record's";
    if ((HANDLE)vok->getNemb(&record) != record.hNEMB || record.hNEMB == NULL)
        return "NEMB's handle is not the record's";
    if (!tellBoth(vok, SM_OPENJOB, 0))
        return "the job was refused";
    if (!tellBoth(vok, SM_STARTPAGE, PAGE))
        return "the page was refused";
    return endPage(vok, printer) ? NULL : "NEMB could not be told of the page's end";
}

typedef struct Job {
    const VokExports* vok;
    const char* printer;
    const char* wrong;
} Job;

static void __cdecl openPart(void* argument) {
    Job* job = (Job*)argument;
    job->wrong = openAndPrint(job->vok, job->printer);
}

static void __cdecl endPart(void* argument) {
    Job* job = (Job*)argument;
    BOOL ended = endJob(job->vok, job->wrong == NULL ? SM_CLOSEJOB : SM_CANCELJOB);
    if (!ended && job->wrong == NULL)
        job->wrong = "the job could not be closed";
}

const char* driveJob(const VokExports* vok, const char* printer) {
    static const char exhausted[] = "memory ran out";
    Job job;
    job.vok = vok;
    job.printer = printer;
    clearRecord();
    lstrcpynA(record.dralTitleSuffix, printer, TITLE_SUFFIX_SIZE);
    lstrcpynA((char*)nembBlock, printer, EVENT_IN_NEMB_BLOCK);
    /* A job that fails has to be ended all the same, or companions and pipes wait for more of it.
     */
    if (!guarded(openPart, &job))
        job.wrong = exhausted;
    if (!guarded(endPart, &job))
        job.wrong = exhausted;
    dropCompanions();
    closeHandle(&record.hDRALProc);
    closeHandle(&record.hDRALThread);
    closeHandle(&record.hNEMBProc);
    closeHandle(&record.hNEMBThread);
    return job.wrong;
}
