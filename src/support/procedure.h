// Entry points that are looked up at run time.
#pragma once

#include <windows.h>

namespace vok {

// The entry point as a function of type Function; null when the library lacks it.
template <typename Function>
Function procedure(HMODULE library, const char* name) {
    // NOLINTNEXTLINE(bugprone-casting-through-void): no other way is free of GCC's warning
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace vok
