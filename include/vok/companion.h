/**
 * @file companion.h
 * What a companion program must bear and speak to be found, started and heard by the library.
 *
 * There are two companions: DRAL, the status side, and NEMB, the job side, one of each for every
 * printer. The library starts them once; they outlive the job and are found again by the next.
 * A companion serves a printer by its *friendly name*, which it is given on its command line, and
 * a *model prefix*, the first four characters of its own file name.
 *
 * Source of the contract: this header. It compiles as C from C89 and as C++ from C++11 on. The
 * texts are macros so that they can be joined with other literals; none of them includes a
 * terminator beyond C's own.
 *
 * ## Files and command lines
 *
 * | system | folder | file | command line after the file name |
 * |---|---|---|---|
 * | NT | driver directory (1) | prefix + VOK_DRAL_EXE | VOK_ARG_PRINTER + friendly name |
 * | NT | driver directory (1) | prefix + VOK_NEMB_EXE | the same + VOK_ARG_JOB |
 * | 9x | system directory | prefix + VOK_DRAL_EXE | as on NT (2) |
 * | 9x | system directory | prefix + VOK_NEMB_EXE | as on NT (2) |
 *
 * (1) The printer driver directory's subdirectory for the driver version.
 * (2) The command line begins with these arguments: no program name precedes them.
 *
 * The friendly name is not quoted: it reaches to the end of the line, or to VOK_ARG_JOB.
 * A path with blanks is not quoted either.
 *
 * ## Windows (window route)
 *
 * | companion | class | title | found |
 * |---|---|---|---|
 * | DRAL | any | prefix + VOK_DRAL_TITLE + friendly name | NT: before every job |
 * | DRAL | VOK_DRAL_HIDDEN + suffix | VOK_DRAL_HIDDEN + suffix | NT (3) |
 * | DRAL | VOK_DRAL_HIDDEN + suffix | VOK_DRAL_TITLE + friendly name | 9x (4) |
 * | NEMB | prefix + VOK_NEMB_TITLE | prefix + VOK_NEMB_TITLE + friendly name | all, by both (5) |
 *
 * (3) By class after a start, by title when an event finds no handle.
 * (4) By both before every job, by class alone after a start.
 * (5) In pipe mode by title alone.
 *
 * The suffix is the job record's `dralTitleSuffix`; print processor and DRAL agree on it. NEMB's
 * prefix in these names is the printer's VOK_PRINTER_PREFIX_VALUE data on the NT window route,
 * where it begins NEMB's file name too, and the model prefix in pipe mode and on 9x: keep the two
 * alike. Titles that DRAL needs at once belong to separate windows.
 *
 * An event is a `WM_COPYDATA`: wParam 0, `dwData` the event identifier, `cbData`
 * VOK_NEMB_BLOCK_SIZE or VOK_DRAL_BLOCK_SIZE, `lpData` the block, valid until the window procedure
 * returns. The window procedure's result is the reply, a full machine word. The print processor
 * waits until it returns.
 *
 * ## Pipes (pipe route: 5.1 and later, spooler and user in different sessions)
 *
 * The library is the server. The pipe is made after the companion has been started (or found), so
 * a companion tries to open VOK_DRAL_PIPE or VOK_NEMB_PIPE followed by the friendly name until it
 * is there, reads frames and answers each with four bytes. The library closes its end at the job's
 * end; the companion then closes its own and opens the next job's pipe. Byte order is
 * little-endian. There is no version field: the frame sizes are the version.
 *
 * NEMB should also hold the mutex VOK_MUTEX_PREFIX + its window title in upper case: in pipe mode,
 * where its window lives in another session, that is how the library sees that it runs.
 */
#ifndef VOK_COMPANION_H
#define VOK_COMPANION_H

#include <vok/vok.h>

/** File names, each behind the four-character model prefix. The system ignores their case. */
#define VOK_DRAL_EXE "DRAL.EXE"
#define VOK_NEMB_EXE "NEMB.EXE"

/** Parts of the command line. */
#define VOK_ARG_SPOOLER " SPLPP"
#define VOK_ARG_PRINTER VOK_ARG_SPOOLER " /F="
#define VOK_ARG_JOB " /J=1"

/** Parts of window classes and titles. */
#define VOK_DRAL_HIDDEN "DRAL Hidden Window-"
#define VOK_DRAL_TITLE "DRAL - "
#define VOK_NEMB_TITLE "NEMB - "

/** First part of the name of the mutex by which a running NEMB is recognised in any session. */
#define VOK_MUTEX_PREFIX "Global\\"

/** Pipe names, each directly followed by the printer's friendly name. */
#define VOK_DRAL_PIPE "\\\\.\\pipe\\DRAL"
#define VOK_NEMB_PIPE "\\\\.\\pipe\\NEMB"

/** The printer data value that holds the prefix of NEMB's window names (text). */
#define VOK_PRINTER_PREFIX_VALUE "Printer Prefix"

enum {
    VOK_MODEL_PREFIX_LENGTH = 4, /**< Characters of the model prefix. */
    /**
     * Room for any name here, its NUL included; longer: cut. Only the title by which an event looks
     * for NEMB's window is not.
     */
    VOK_NAME_SIZE = 260,
    VOK_PIPE_INSTANCES = 2,         /**< Server ends that may exist at once under one name. */
    VOK_PIPE_BUFFER_SIZE = 1024,    /**< Bytes, each way. */
    VOK_PIPE_DEFAULT_TIMEOUT = 1000 /**< Milliseconds, for clients that use the default. */
};

#pragma pack(push, 1)

/** What the library writes to NEMB's pipe for one event, in two writes: identifier, block. */
typedef struct VokNembFrame {
    DWORD messageId;                 /**< SM_OPENJOB, … or the caller's own identifier. */
    BYTE block[VOK_NEMB_BLOCK_SIZE]; /**< The event block as the print processor gave it. */
} VokNembFrame;

/** What the library writes to DRAL's pipe for one event. No identifier precedes the block. */
typedef struct VokDralFrame {
    BYTE block[VOK_DRAL_BLOCK_SIZE]; /**< The event block as the print processor gave it. */
} VokDralFrame;

/**
 * What the companion writes back. Too few bytes replace only the low bytes of the library's own
 * answer, which is YESPRINT for NEMB and NOPRINT for DRAL.
 */
typedef struct VokPipeReply {
    LONG reply; /**< NOPRINT, YESPRINT, WAITPRINT or a value of the companion's own. */
} VokPipeReply;

#pragma pack(pop)

#endif
