/* Included first of all where a compiler of the platform's dialect reads the mingw-w64 headers.
   Those take what they don't need there away from all that comes after: attributes, which the
   compiler's own headers have, and the system's calling convention, which matters where another is
   the default. Others they put where that dialect has no place for them. */
#include <_mingw.h>
#undef __attribute__
#undef __stdcall
#undef __MINGW_ATTRIB_NORETURN
#define __MINGW_ATTRIB_NORETURN
#undef __MINGW_ATTRIB_DEPRECATED
#define __MINGW_ATTRIB_DEPRECATED
#undef __MINGW_NOTHROW
#define __MINGW_NOTHROW
