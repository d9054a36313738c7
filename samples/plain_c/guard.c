#include "guard.h"

#ifdef _MSC_VER

/*
 * The exception is one of GCC's C++ runtime. An exception handler alone does not end it: for every
 * frame of the library that has something to tidy up, that runtime stops there and then unwinds to
 * the place that it has noted in the exception. One that nobody noted is null, and the process
 * ends. So the place is noted here: right behind RtlCaptureContext, which is returned to again.
 */

enum { OUT_OF_MEMORY_CODE = 0x20474343, CAUGHT_BY_ANOTHER_LANGUAGE = 1 };

/* The head of that runtime's exceptions on 64-bit Windows: the same in every version. */
typedef struct Thrown {
    DWORD64 language;
    void(__cdecl* dispose)(int reason, struct Thrown* thrown);
    ULONG_PTR unused;
    ULONG_PTR targetFrame;
    ULONG_PTR targetAddress;
    ULONG_PTR targetValue;
} Thrown;

typedef struct Place {
    CONTEXT context;
    Thrown* volatile thrown;
} Place;

/* The frame of the function that has captured the context, as the system calls it; of the context
   only the registers before that are left. */
static ULONG_PTR frameOf(CONTEXT* captured) {
    DWORD64 base = 0;
    DWORD64 frame = 0;
    void* data = NULL;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(captured->Rip, &base, NULL);
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, captured->Rip, function, captured, &data, &frame,
                     NULL);
    return (ULONG_PTR)frame;
}

static LONG stop(const EXCEPTION_POINTERS* exception, Place* place) {
    const EXCEPTION_RECORD* record = exception->ExceptionRecord;
    Thrown* thrown;
    if (record->ExceptionCode != OUT_OF_MEMORY_CODE)
        return EXCEPTION_CONTINUE_SEARCH;
    thrown = (Thrown*)record->ExceptionInformation[0];
    thrown->targetAddress = (ULONG_PTR)place->context.Rip;
    thrown->targetFrame = frameOf(&place->context);
    place->thrown = thrown;
    return EXCEPTION_EXECUTE_HANDLER;
}

BOOL guarded(void(__cdecl* part)(void* argument), void* argument) {
    Place place;
    place.thrown = NULL;
    RtlCaptureContext(&place.context);
    if (place.thrown == NULL) {
        __try {
            part(argument);
            return TRUE;
        } __except (stop(GetExceptionInformation(), &place)) {
            /* Nothing in the library had to be tidied up. */
        }
    }
    place.thrown->dispose(CAUGHT_BY_ANOTHER_LANGUAGE, place.thrown);
    return FALSE;
}

#else

BOOL guarded(void(__cdecl* part)(void* argument), void* argument) {
    part(argument);
    return TRUE;
}

#endif
