/*
 * What the library can't go below: the system calls that its job demands for a job whose companions
 * are running and whose settings are there, in their order, and nothing else. One fixed buffer for
 * each thing, no failure is looked at, calls come one after another.
 */
#pragma once

#include <vok/companion.h>

#include <winspool.h>

enum { pathSize = 260, lineSize = 1200, level_trace = 2, level_detail = 8, family_9x = 1 };

/* The locks that calls take: creation and release, the configuration library's, and the depth's. */
extern CRITICAL_SECTION createLock;
extern CRITICAL_SECTION configLock;

/* What the entry point saved. */
extern HMODULE floorModule;
extern BOOL floorOnNt;

/* A descriptor that lets everyone in. */
typedef struct OpenSecurity {
    SECURITY_ATTRIBUTES attributes;
    SECURITY_DESCRIPTOR descriptor;
    void* sid;
    DWORD list[16];
} OpenSecurity;

void makeOpenSecurity(OpenSecurity* security, BOOL inheritable);
void freeOpenSecurity(OpenSecurity* security);

/* Text is put at `to`; the result is its end, which holds no NUL. */
char* putText(char* to, const char* text);
char* putNumber(char* to, DWORD value);
char* putPadded(char* to, DWORD value, DWORD radix, int width);
char* putHandle(char* to, const void* handle);
char* putReply(char* to, LRESULT reply);

/* The logging of one exported call. */
void beginCall(const char* exportName);
void endCall(void);
void trace(const char* name);
BOOL isLogged(DWORD level);
void writeLine(const char* text, const char* end);

/* One message line, of a text and what follows it. */
void logText(const char* text);
void logTwo(const char* text, const char* more);
void logNumber(const char* text, DWORD number);
void logHandle(const char* text, const void* handle);
void logReply(const char* text, LRESULT reply);

/* GetOsFamily as far as it matters here: family_9x, 3 and 6 (which have sessions), or another. */
int osFamily(void);
