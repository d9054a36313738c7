// The exchanges with the companions.
#include <cstdlib>
#include <cstring>
#include <string>

#include "faults/model.h"

namespace vok::test {
namespace {

constexpr LONG_PTR no = NOPRINT;
constexpr LONG_PTR yes = YESPRINT;
constexpr const char* hiddenTitle = "null, \"DRAL Hidden Window-Suffix\"";

}  // namespace

void Model::setOpen(bool open) {
    record_.epDoc =
        open ? record_.epDoc | VOK_EPDOC_OPENJOB : record_.epDoc & ~DWORD{VOK_EPDOC_OPENJOB};
}

LONG_PTR Model::send(HANDLE window, DWORD id, size_t size) {
    return numberIn(trace_.take("SendMessageA", handleName(window) + ", 74, 0, copydata{" +
                                                    std::to_string(id) + ", bytes[" +
                                                    std::to_string(size) + "]"));
}

bool Model::connect(HANDLE pipe) {
    const std::string result = trace_.take("ConnectNamedPipe", handleName(pipe));
    return succeeded(result) || hasError(result, ERROR_PIPE_CONNECTED);
}

void Model::closePipe(HANDLE& slot) {
    trace_.take("DisconnectNamedPipe", handleName(slot));
    if (slot != INVALID_HANDLE_VALUE) {  // of that handle's closings the trace knows nothing
        trace_.take("CloseHandle", handleName(slot));
    }
    slot = nullptr;
}

// Fewer than four bytes replace only the low ones of the reply.
LONG_PTR Model::read(HANDLE pipe, LONG reply) {
    const std::string result = trace_.take("ReadFile", handleName(pipe));
    const std::string note = noteIn(result);
    mayBeZero_ = succeeded(result) && note.empty();
    const size_t digits = note.find("] ");
    if (digits == std::string::npos) {
        return reply;
    }
    auto* bytes = reinterpret_cast<unsigned char*>(&reply);
    char* at = const_cast<char*>(note.c_str()) + digits + 2;
    for (size_t i = 0; i < sizeof(reply) && *at != '\0'; ++i) {
        bytes[i] = static_cast<unsigned char>(std::strtoul(at, &at, 16));
    }
    return reply;
}

LONG_PTR Model::exchangeDral() {
    trace_.take("WriteFile", handleName(record_.hDRAL) + ", bytes[36]");
    return read(record_.hDRAL, 0);
}

LONG_PTR Model::exchangeNemb() {
    const std::string pipe = handleName(record_.hNEMB);
    const auto first = static_cast<LONG>(numberIn(trace_.take("WriteFile", pipe + ", bytes[4]")));
    trace_.take("WriteFile", pipe + ", bytes[552]");
    return read(record_.hNEMB, first);
}

LONG_PTR Model::dralXp(DWORD id) {
    return record_.dralMode == VOK_MODE_PIPE ? dralByPipe(id) : dralByWindow(id);
}

void Model::findDral() {
    record_.hDRAL = handleIn(trace_.take("FindWindowA", hiddenTitle));
    if (!record_.hDRAL && record_.hDRALProc) {
        trace_.take("WaitForInputIdle", handleName(record_.hDRALProc) + ", 120000");
        record_.hDRAL = handleIn(trace_.take("FindWindowA", hiddenTitle));
    }
}

LONG_PTR Model::dralByWindow(DWORD id) {
    if (!record_.hDRAL) {
        findDral();
    }
    if (!record_.hDRAL) {
        return no;
    }
    const bool ends = id == SM_CLOSEJOB || id == SM_CANCELJOB;
    if (id != SM_OPENJOB && id != SM_STARTPAGE && !ends) {
        return yes;
    }
    if (id == SM_OPENJOB && isOpen()) {
        return yes;
    }
    if (id == SM_CLOSEJOB && !isOpen()) {
        record_.hDRAL = nullptr;
        return yes;
    }
    const LONG_PTR reply = send(record_.hDRAL, id, VOK_DRAL_BLOCK_SIZE);
    if (id == SM_OPENJOB && reply == YESPRINT) {
        setOpen(true);
    }
    if (ends) {
        record_.hDRAL = reply == WAITPRINT ? record_.hDRAL : nullptr;
        trace_.take("Sleep", "1000");
    }
    return reply;
}

LONG_PTR Model::dralByPipe(DWORD id) {
    if (!record_.hDRAL) {
        return yes;
    }
    const bool ends = id == SM_CLOSEJOB || id == SM_CANCELJOB;
    if (id == SM_OPENJOB) {
        if (isOpen()) {
            return yes;
        }
        setOpen(true);
        return connect(record_.hDRAL) ? exchangeDral() : yes;
    }
    if (!ends) {
        return id == SM_STARTPAGE ? exchangeDral() : yes;
    }
    if (!connect(record_.hDRAL) || (id == SM_CLOSEJOB && !isOpen())) {
        closePipe(record_.hDRAL);
        return yes;
    }
    const LONG_PTR reply = exchangeDral();
    if (reply != WAITPRINT) {
        setOpen(isOpen() && id == SM_CLOSEJOB);
        closePipe(record_.hDRAL);
    }
    trace_.take("Sleep", "1000");
    return reply;
}

LONG_PTR Model::dral9x(DWORD id) {
    if (!record_.hDRAL) {
        return yes;
    }
    const bool ends = id == SM_CLOSEJOB || id == SM_CANCELJOB;
    if (id == SM_CLOSEJOB && !isOpen()) {
        record_.hDRAL = nullptr;
        return yes;
    }
    if (!ends) {
        return dralByWindow(id);
    }
    setOpen(isOpen() && id != SM_CLOSEJOB);
    LONG_PTR reply = send(record_.hDRAL, id, VOK_DRAL_BLOCK_SIZE);
    while (reply == WAITPRINT && !trace_.isBroken()) {
        trace_.take("Sleep", "1000");
        reply = send(record_.hDRAL, id, VOK_DRAL_BLOCK_SIZE);
    }
    record_.hDRAL = nullptr;
    return reply;
}

LONG_PTR Model::nembXp(DWORD id) {
    if (record_.nembMode == VOK_MODE_PIPE) {
        return nembByPipe(id);
    }
    if (!record_.hNEMB) {
        findNemb();
    }
    return record_.hNEMB ? nembByWindow(id) : no;
}

// Without the printer's prefix the names are empty.
void Model::findNemb() {
    trace_.take("OpenPrinterA", "\"Office\"");
    const bool named = trace_.take("GetPrinterDataA", "\"Printer Prefix\"").starts_with("0");
    const std::string names = named ? "\"DEMONEMB - \", \"DEMONEMB - Office\"" : "\"\", \"\"";
    record_.hNEMB = handleIn(trace_.take("FindWindowA", names));
    if (!record_.hNEMB && record_.hNEMBProc) {
        trace_.take("WaitForInputIdle", handleName(record_.hNEMBProc) + ", 60000");
        record_.hNEMB = handleIn(trace_.take("FindWindowA", names));
    }
}

LONG_PTR Model::nembByWindow(DWORD id) {
    const bool gated = id == SM_OPENJOB || id == SM_CLOSEJOB;
    return gated && !isOpen() ? yes : send(record_.hNEMB, id, VOK_NEMB_BLOCK_SIZE);
}

// Only the answer to the opening reaches the caller.
LONG_PTR Model::nembByPipe(DWORD id) {
    if (!record_.hNEMB) {
        return yes;
    }
    if (id == SM_OPENJOB) {
        return isOpen() && connect(record_.hNEMB) ? exchangeNemb() : yes;
    }
    if (id != SM_CLOSEJOB || isOpen()) {
        exchangeNemb();
        mayBeZero_ = false;
    }
    if (id == SM_CLOSEJOB) {
        setOpen(false);
    }
    if (id == SM_CLOSEJOB || id == SM_CANCELJOB) {
        closePipe(record_.hNEMB);
    }
    return yes;
}

// Only a pipe that was connected before is written to.
LONG Model::message(const Step& step) {
    const std::string handle = handleName(record_.hDRAL);
    if (step.which == Export::messageToWindow) {
        return static_cast<LONG>(numberIn(trace_.take("PostMessageA", handle)));
    }
    if (!hasError(trace_.take("ConnectNamedPipe", handle), ERROR_PIPE_CONNECTED)) {
        return 0;
    }
    trace_.take("WriteFile", handle + ", bytes[4]");
    return static_cast<LONG>(numberIn(trace_.take("WriteFile", handle + ", bytes[36]")));
}

}  // namespace vok::test
