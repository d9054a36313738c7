// The headers and tables of a loaded module's image.
#pragma once
#include <windows.h>

#include <string>
#include <vector>

namespace vok::test {

// What lies at an offset within the image.
template <class T>
T* imageAt(HMODULE module, ULONGLONG offset) {
    return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(module) + offset);
}

const IMAGE_NT_HEADERS64& imageHeaders(HMODULE module);

// Names of everything the module exports, in the order of its table; "#12" for one without a name.
std::vector<std::string> exportNames(HMODULE module);

}  // namespace vok::test
