// What a consumer without a C runtime takes the pipe route by.

#include "common/other_session.h"

extern "C" __declspec(dllexport) BOOL moveToSessionZero(HMODULE library) {
    return vok::sample::moveToSessionZero(library) ? TRUE : FALSE;
}
