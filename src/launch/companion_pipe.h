// The server end of the pipe by which a companion in another session is reached.
#pragma once

#include <windows.h>

#include <memory>

namespace vok {

struct PipeCloser {
    void operator()(HANDLE pipe) const {
        if (pipe != INVALID_HANDLE_VALUE) {
            CloseHandle(pipe);
        }
    }
};

// Closed only when it doesn't come as far as the record, for want of memory.
using CompanionPipe = std::unique_ptr<void, PipeCloser>;

// Makes one instance of the pipe that bears the prefix directly followed by the printer's friendly
// name; every user may connect to it. Holds INVALID_HANDLE_VALUE on failure.
CompanionPipe createCompanionPipe(const char* namePrefix, const char* friendlyName);

}  // namespace vok
