// Calls the exports through the import library, as a C program would.

#include <stdio.h>
#include <vok/vok.h>

static int failures = 0;

static void expect(int holds, const char* what) {
    if (!holds) {
        ++failures;
        printf("FAILED: %s\n", what);
    }
}

int main(void) {
    static VKDATA record;
    static BYTE block[VOK_NEMB_BLOCK_SIZE];
    record.hDRAL = (HANDLE)0x1234;
    record.hNEMB = (HANDLE)0x123400005678;
    expect(VOKGetDral(&record) == (HWND)0x1234, "the getter returns DRAL's handle");
    expect(VOKGetNemb(&record) == (HWND)0x123400005678, "the getter returns NEMB's handle whole");
    expect(VOKGetDral(NULL) == NULL, "no record, no DRAL");
    expect(VOKGetNemb(NULL) == NULL, "no record, no NEMB");
    expect(VOKLaunchXFiles("no such printer", "LPT1:", NULL) == 0, "no record, no launch");
    expect(VOKSendDralMsg(block, SM_OPENJOB, NULL) == YESPRINT, "no record is answered YESPRINT");
    expect(VOKSendNembMsg(block, SM_OPENJOB, NULL) == YESPRINT, "no record is answered YESPRINT");
    expect(VOKSendMsgEx("name", NULL, 2, WM_USER, block, 1) == 0, "no handle, nothing sent");
    return failures == 0 ? 0 : 1;
}
