// The runtime's file streams, as far as a program looks by them whether a simulated file is there.
#include <cstdio>
#include <span>
#include <string_view>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

using OpenStream = FILE* (*)(const char*, const char*);

FILE* openReal(const char* path, const char* mode) {
    static const auto open =
        functionAt<OpenStream>(real.getProcAddress(real.getModuleHandleA("msvcrt.dll"), "fopen"));
    return open(path, mode);
}

// Paths on other drives than the simulated machine's, and openings for writing, are the test
// program's own. A simulated file's stream is empty.
FILE* openStream(const char* path, const char* mode) {
    const System* system = System::find();
    const std::string_view drive = std::string_view(path).substr(0, 3);
    const bool isSimulatedPath = sameText(drive, "c:\\") || sameText(drive, "d:\\");
    if (!system || !isSimulatedPath || mode[0] != 'r') {
        return openReal(path, mode);
    }
    Call call("fopen", path, mode);
    if (call.fails() || call.system().files.refusal(path) || !call.system().files.exists(path)) {
        call.done(0);
        return nullptr;
    }
    call.done(1);
    return openReal("NUL", mode);
}

}  // namespace

std::span<const Substitute> fileStreamSubstitutes() {
    static const Substitute all[] = {substitute("fopen", openStream)};
    return all;
}

}  // namespace vok::test
