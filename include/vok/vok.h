/**
 * @file vok.h
 * The print processor interface: what a print processor needs to call the library.
 *
 * The library finds or starts two companion programs in the interactive user's session, DRAL (the
 * status side) and NEMB (the job side), forwards every print-job event to them and returns their
 * answer. It is one DLL, `<PREFIX>vok.dll`, whose file name begins with the four-character model
 * prefix; because that name differs from model to model a print processor usually loads it with
 * `LoadLibrary` and looks the exports up by the names and types given here. Linking against the
 * import library works as well.
 *
 * Source of the contract: this header. It compiles as C from C89 and as C++ from C++11 on, before
 * or after `windows.h` and whatever part of it is wanted, and defines nothing but names of this
 * contract. Where `windows.h` brings the source annotations (`sal.h`), the arguments bear them.
 *
 * Common to all exports:
 * - They use the platform's 64-bit calling convention, whatever a compiler's default is, and may be
 *   called on any thread. None may be called from `DllMain`.
 * - Calls for one job record must come one after another; different records are independent.
 * - No system error leaves an export as an exception. Exhausted memory may leave the four exports
 *   that do work (never the getters): as `std::bad_alloc` of the library's own C++ runtime, GCC's.
 *   C++ of GCC and clang for mingw-w64 catches it as such; all others see a structured exception
 *   with the code 0x20474343, which a handler alone does not end: samples/plain_c/guard.c does.
 *   Caught by nobody, it ends the process. Afterwards the library works as ever; the job's record
 *   is as the call had left it.
 * - Texts are 8-bit, NUL-terminated, in the system's ANSI code page. The library copies what it
 *   needs; ownership of every argument stays with the caller.
 */
#ifndef VOK_VOK_H
#define VOK_VOK_H

#include <vok/annotations.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Print-job events: the `messageId` of VOKSendDralMsg and VOKSendNembMsg. */
enum {
    SM_OPENJOB = 1125,   /**< A job is opening; the companion may accept or refuse it. */
    SM_CLOSEJOB = 1127,  /**< The job is closing; DRAL may ask to be waited for. */
    SM_STARTPAGE = 1135, /**< A page starts. DRAL knows no other page event. */
    SM_CANCELJOB = 1137  /**< The job was cancelled; DRAL may ask to be waited for. */
};

/** Replies: what the event exports return. Any other value is a companion's own, unchanged. */
enum {
    NOPRINT = 0,  /**< Do not print this job. */
    YESPRINT = 1, /**< Go on. Also the answer when an event cannot be delivered. */
    WAITPRINT = 2 /**< Still busy with this job: ask again after a pause. */
};

/** How a companion is reached: the values of `dralMode` and `nembMode`. */
enum {
    VOK_MODE_NONE = 0,  /**< Not started yet, or on a 9x system. */
    VOK_MODE_PIPE = 1,  /**< By a named pipe whose server end the record holds. */
    VOK_MODE_WINDOW = 2 /**< By messages to a window. */
};

/** The bit of `epDoc` that says that the job was opened towards DRAL. */
enum { VOK_EPDOC_OPENJOB = 0x10 };

/** Sizes, in bytes. */
enum {
    VOK_NEMB_BLOCK_SIZE = 552,   /**< Bytes of the event block that NEMB is sent. */
    VOK_DRAL_BLOCK_SIZE = 36,    /**< Bytes of the event block that DRAL is sent. */
    VOK_TITLE_SUFFIX_SIZE = 241, /**< Room of `dralTitleSuffix`, its terminating NUL included. */
    VOK_RECORD_SIZE = 304        /**< Size of the whole job record. */
};

/**
 * The data block of an event, opaque to the library. It must have at least VOK_NEMB_BLOCK_SIZE
 * readable bytes when it goes to NEMB and VOK_DRAL_BLOCK_SIZE when it goes to DRAL. A block for
 * NEMB begins with the printer's name as NUL-terminated text; the rest is agreed between the print
 * processor and the companions.
 */
typedef void EventBlock;

/**
 * The job record, one for each print job.
 *
 * Owned by the caller: allocate it, zero it, fill in `dralTitleSuffix`, pass it to
 * VOKLaunchXFiles and keep it for all further calls of the job. The library never allocates or
 * frees it. The handles in it are the record's: the library closes only the pipes (at the job's
 * end), never the process and thread handles, which the caller may close when the job is over.
 */
typedef struct _VKDATA { /* NOLINT(bugprone-reserved-identifier): the name is part of the ABI */
    HANDLE hNEMB;        /**< NEMB's window, or the server end of its pipe; null: not reached. */
    HANDLE hDRAL;        /**< DRAL's window, or the server end of its pipe; null: not reached. */
    HANDLE hNEMBProc;    /**< NEMB's process, null unless this job started it with a handle. */
    HANDLE hDRALProc;    /**< DRAL's process, null unless this job started it with a handle. */
    HANDLE hNEMBThread;  /**< Primary thread of `hNEMBProc`. */
    HANDLE hDRALThread;  /**< Primary thread of `hDRALProc`. */
    DWORD epDoc;         /**< Flags; the library touches VOK_EPDOC_OPENJOB alone. */
    DWORD dralMode;      /**< VOK_MODE_…: how DRAL is reached. Written by the library. */
    DWORD nembMode;      /**< VOK_MODE_…: how NEMB is reached. Written by the library. */
    /**
     * NUL-terminated text that follows "DRAL Hidden Window-" in the class and title of DRAL's
     * hidden window. Written by the caller before the first call. A text without a NUL counts as
     * all of its VOK_TITLE_SUFFIX_SIZE characters and is then cut so that the name fits 259.
     */
    char dralTitleSuffix[VOK_TITLE_SUFFIX_SIZE];
} VKDATA;

#ifdef VOK_BUILDING_LIBRARY
#define VOK_API
#else
#define VOK_API __declspec(dllimport)
#endif

/**
 * Begins a job: finds or starts both companions, DRAL first, and stores in the record how each is
 * reached.
 *
 * @param friendlyName The printer's name as `OpenPrinter` takes it. Null counts as empty in names
 *                     and texts; `OpenPrinter` is given the null: the local print server.
 * @param portName     The name of the port that the job goes to; it decides how a companion is
 *                     started for a network port (`\\host\queue`). Null counts as empty.
 * @param record       The zeroed job record. With null nothing is started and 0 is returned.
 * @return 1 when both companions are reachable, else 0; no error code. A companion that has been
 *         started in window mode may have no window yet; the call answers 0 then: call again
 *         after a pause. Each call starts a companion again for as long as it finds no window with
 *         the companion's title, so bound the calls. A companion whose pipe could not be made
 *         counts as reachable: its handle is INVALID_HANDLE_VALUE then.
 *
 * Blocks for window searches of up to 2 seconds for each companion on 9x systems, and for as long
 * as the system takes to start a process.
 */
VOK_API BOOL __cdecl VOKLaunchXFiles(VOK_SAL(_In_opt_z_) const char* friendlyName,
                                     VOK_SAL(_In_opt_z_) const char* portName,
                                     VOK_SAL(_Inout_opt_) VKDATA* record);

/**
 * Tells DRAL of an event.
 *
 * @param eventBlock At least VOK_DRAL_BLOCK_SIZE bytes; copied to DRAL byte for byte.
 * @param messageId  SM_OPENJOB, SM_CLOSEJOB, SM_STARTPAGE or SM_CANCELJOB; any other is not sent
 *                   and answered YESPRINT.
 * @param record     The job's record; null is answered YESPRINT.
 * @return DRAL's reply. YESPRINT when the event cannot be delivered; NOPRINT on the window route of
 *         NT when DRAL's window cannot be found even after its start-up, whatever the event; on the
 *         pipe route when the block is null, or when a frame gets no answer, as when DRAL breaks
 *         its pipe.
 *
 * The record's VOK_EPDOC_OPENJOB bit is set by a YESPRINT to SM_OPENJOB, on the pipe route by the
 * attempt to send it, whatever becomes of that. While it is set, SM_OPENJOB is not sent but
 * answered YESPRINT; while it is clear, so is SM_CLOSEJOB, which then lets DRAL go. SM_CLOSEJOB
 * clears it on 9x systems, SM_CANCELJOB when it ends a pipe. Any answer but WAITPRINT to one of the
 * two makes `hDRAL` null, a pipe being closed first; so does a pipe that cannot be connected for
 * them.
 *
 * Once sent, SM_CLOSEJOB and SM_CANCELJOB pause for 1000 milliseconds on NT systems and return a
 * WAITPRINT, which asks the caller to send the event again; on 9x systems they repeat the event
 * every 1000 milliseconds for as long as DRAL answers WAITPRINT, without a bound. Waiting for DRAL
 * to come up takes up to 120,000 milliseconds. Beyond that the call lasts as long as DRAL takes to
 * answer.
 */
VOK_API LONG __cdecl VOKSendDralMsg(VOK_SAL(_In_reads_bytes_(VOK_DRAL_BLOCK_SIZE))
                                        const EventBlock* eventBlock,
                                    DWORD messageId, VOK_SAL(_Inout_opt_) VKDATA* record);

/**
 * Tells NEMB of an event. Same arguments as VOKSendDralMsg, with a block of at least
 * VOK_NEMB_BLOCK_SIZE bytes that begins with the printer's name; every identifier is forwarded.
 *
 * SM_OPENJOB and SM_CLOSEJOB are sent only while VOK_EPDOC_OPENJOB is set, else answered YESPRINT.
 *
 * @return NEMB's reply. On the pipe route only the reply to SM_OPENJOB is passed on, every other
 *         event answers YESPRINT. YESPRINT when the event cannot be delivered, and when NEMB breaks
 *         its pipe instead of answering; NOPRINT on the window route of NT when NEMB's window
 *         cannot be found even after its start-up, whatever the event; on the pipe route for an
 *         SM_OPENJOB whose block is null, or whose pipe NEMB breaks before the library begins to
 *         write to it.
 *
 * SM_CLOSEJOB and SM_CANCELJOB end the pipe: afterwards `hNEMB` is null, and SM_CLOSEJOB has
 * cleared VOK_EPDOC_OPENJOB. Waiting for NEMB to come up takes up to 60,000 milliseconds. Beyond
 * that the call lasts as long as NEMB takes to answer.
 */
VOK_API LONG __cdecl VOKSendNembMsg(VOK_SAL(_In_reads_bytes_(VOK_NEMB_BLOCK_SIZE))
                                        const EventBlock* eventBlock,
                                    DWORD messageId, VOK_SAL(_Inout_opt_) VKDATA* record);

/**
 * Posts a message to a companion's window, or writes a message with its payload into a companion's
 * connected pipe. No reply is read.
 *
 * @param friendlyName A name for the log line alone. Null counts as empty.
 * @param companion    The companion's window or pipe handle.
 * @param viaPipe      1: write to the pipe; any other value: post to the window.
 * @param messageId    The message, or the first four bytes written to the pipe.
 * @param data         The payload, at least one readable byte whatever else is given. Only
 *                     that byte travels with a posted message, as `lParam`.
 * @param length       Bytes of the payload; 0 is refused on both routes.
 * @return Non-zero when the message was posted or the payload written; 0 for a null handle, a
 *         zero length, a failure, or a pipe that was not connected before the call.
 */
VOK_API DWORD __cdecl VOKSendMsgEx(VOK_SAL(_In_opt_z_) const char* friendlyName,
                                   VOK_SAL(_In_opt_) HANDLE companion, DWORD viaPipe,
                                   DWORD messageId,
                                   VOK_SAL(_In_reads_bytes_(length)) const BYTE* data,
                                   DWORD length);

#ifdef __cplusplus
}
#endif

/** Names of the six exports, for `GetProcAddress`. */
#define VOK_EXPORT_GET_DRAL "?VOKGetDral@@YAPEAUHWND__@@PEAU_VKDATA@@@Z"
#define VOK_EXPORT_GET_NEMB "?VOKGetNemb@@YAPEAUHWND__@@PEAU_VKDATA@@@Z"
#define VOK_EXPORT_LAUNCH_XFILES "VOKLaunchXFiles"
#define VOK_EXPORT_SEND_DRAL_MSG "VOKSendDralMsg"
#define VOK_EXPORT_SEND_NEMB_MSG "VOKSendNembMsg"
#define VOK_EXPORT_SEND_MSG_EX "VOKSendMsgEx"

/*
 * The two getters are exported under the platform compiler's C++ decoration, which MSVC makes by
 * itself when this header is compiled as C++ (with STRICT, as windows.h does unless told
 * otherwise). GCC and clang for the mingw target use the plain names, which the import library
 * libXXXXvok.dll.a maps to the decorated ones. A C program built with MSVC looks them up by name.
 */
#if !defined(_MSC_VER) && defined(__cplusplus)
#define VOK_GETTER extern "C" VOK_API
#elif !defined(_MSC_VER) || defined(__cplusplus)
#define VOK_GETTER VOK_API
#endif

#ifdef VOK_GETTER
/**
 * Returns `hDRAL` of the record, or null for a null record. In pipe mode that is the pipe's handle,
 * unchanged. No logging, no other effect, no failure. May be called at any time, on any thread.
 */
VOK_GETTER HWND __cdecl VOKGetDral(VOK_SAL(_In_opt_) VKDATA* record);

/** Returns `hNEMB` of the record, or null for a null record, as VOKGetDral does for `hDRAL`. */
VOK_GETTER HWND __cdecl VOKGetNemb(VOK_SAL(_In_opt_) VKDATA* record);
#endif

/**
 * Function types of the six exports, for `GetProcAddress`. VOKSendMsgFn is that of both event
 * exports and tells what is true of both: NEMB's block is the larger one.
 */
typedef BOOL(__cdecl* VOKLaunchXFilesFn)(VOK_SAL(_In_opt_z_) const char* friendlyName,
                                         VOK_SAL(_In_opt_z_) const char* portName,
                                         VOK_SAL(_Inout_opt_) VKDATA* record);
typedef LONG(__cdecl* VOKSendMsgFn)(VOK_SAL(_In_reads_bytes_(VOK_DRAL_BLOCK_SIZE))
                                        const EventBlock* eventBlock,
                                    DWORD messageId, VOK_SAL(_Inout_opt_) VKDATA* record);
typedef DWORD(__cdecl* VOKSendMsgExFn)(VOK_SAL(_In_opt_z_) const char* friendlyName,
                                       VOK_SAL(_In_opt_) HANDLE companion, DWORD viaPipe,
                                       DWORD messageId,
                                       VOK_SAL(_In_reads_bytes_(length)) const BYTE* data,
                                       DWORD length);
typedef HWND(__cdecl* VOKGetFn)(VOK_SAL(_In_opt_) VKDATA* record);

#endif
