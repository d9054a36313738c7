/**
 * @file config_library.h
 * The contract of the configuration library: a DLL of the printer software, `<PREFIX>cfg.dll`,
 * that tells where in the registry the software keeps its settings.
 *
 * The library loads it at the beginning of an exported call, by the system's search order or else
 * from the printer driver directory, asks for one item and unloads it again. Without it, or when
 * memory does not hold an item of the size that it reports, nothing is logged and printing goes on.
 *
 * It comes and goes with every call for as long as the spooler runs, so it must give back at its
 * end all that it took. A C++ runtime that is linked in statically may not: GNU's keeps 72 KiB.
 *
 * Source of the contract: this header. It compiles as C from C89 and as C++ from C++11 on.
 */
#ifndef VOK_CONFIG_LIBRARY_H
#define VOK_CONFIG_LIBRARY_H

#include <vok/annotations.h>

#ifdef __cplusplus
extern "C" {
#endif

/** File name behind the four-character model prefix, and the name of the one export. */
#define VOK_CONFIG_LIBRARY_FILE "cfg.dll"
#define VOK_EXPORT_GET_CONFIG_DATA "GetConfigData"

enum {
    /**
     * The item that is asked for: the registry path, relative to HKEY_LOCAL_MACHINE and without
     * backslashes at its ends, of the printer software's base key. The key must exist; the
     * library makes `<path>\XFiles\Logger` below it.
     */
    VOK_CONFIG_REGISTRY_BASE = 10002,
    /** What the sizing call must return. */
    VOK_CONFIG_SIZE_REPORTED = 3
};

/**
 * `GetConfigData`, called twice for an item:
 *
 * 1. with `buffer` null and `*size` 0: stores the bytes needed, the NUL included, in `*size` and
 *    returns VOK_CONFIG_SIZE_REPORTED. Any other result means that there is no such item.
 * 2. with the same numbers, a buffer and `*size` as reported: writes the item as NUL-terminated
 *    8-bit text of at most `*size` bytes. The result is not looked at.
 *
 * @param first  Always 0.
 * @param item   VOK_CONFIG_REGISTRY_BASE.
 * @param third  Always 0.
 * @param buffer Null, or zeroed memory owned by the caller, of at least `*size` bytes.
 * @param size   In and out, in bytes; never null. Owned by the caller.
 *
 * May be called on any thread, never from `DllMain`; must not throw.
 */
typedef DWORD(__cdecl* GetConfigDataFn)(DWORD first, DWORD item, DWORD third,
                                        VOK_SAL(_Out_writes_bytes_opt_(*size)) char* buffer,
                                        VOK_SAL(_Inout_) DWORD* size);

#ifdef __cplusplus
}
#endif

#endif
