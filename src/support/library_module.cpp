#include "support/library_module.h"

namespace vok {

namespace {

HMODULE module = nullptr;

}  // namespace

HMODULE libraryModule() {
    return module;
}

void setLibraryModule(HMODULE handle) {
    module = handle;
}

}  // namespace vok
