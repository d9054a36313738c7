// The configuration library of the printer software (vok/config_library.h is its contract).
#pragma once

#include <cstdint>
#include <string>

namespace vok {

class Module;

// The process's configuration library, made and loaded on first use; the object exists even when
// its file can't be loaded. Null when it could not be made. Stays owned by its holder, until
// releaseConfigLibrary.
Module* getConfigLibrary(const std::string& namePrefix);

// Unloads and destroys it; the next getConfigLibrary makes a new one.
void releaseConfigLibrary();

// Asks for an item. Returns 0; ERROR_INVALID_HANDLE when there is no "GetConfigData" to call; or
// ERROR_INSUFFICIENT_BUFFER, with `out` untouched, when its size, or memory of that size, could not
// be had. Memory that runs out while `out` takes the text leaves as std::bad_alloc.
std::uint32_t getConfigData(const Module& module, std::uint32_t first, std::uint32_t item,
                            std::uint32_t third, std::string& out);

}  // namespace vok
