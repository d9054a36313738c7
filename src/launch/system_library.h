// Libraries of the system that only newer systems have.
#pragma once

#include <windows.h>

#include "support/procedure.h"

namespace vok {

// Loads a library from the system directory, by its full path. Null when it isn't there. It is
// never freed.
HMODULE loadSystemLibrary(const char* fileName);

// An entry point of it; null when library or entry point is missing.
template <typename Function>
Function systemProcedure(HMODULE library, const char* name) {
    return library == nullptr ? nullptr : procedure<Function>(library, name);
}

}  // namespace vok
