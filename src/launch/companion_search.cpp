#include "launch/companion_search.h"

#include <vok/companion.h>

#include <cctype>
#include <string>

#include "logging/log_line.h"
#include "support/exception.h"
#include "support/mutex.h"
#include "support/text.h"

namespace vok {

namespace {

constexpr unsigned long searchAttempts = 200;
constexpr DWORD searchPause = 10;

}  // namespace

HWND FindXWindow(const char* className, const char* title) {
    logLine({"FindXWindow className = ", toString(className),
             "FindXWindow WindowName = ", toString(title)});
    HWND window = nullptr;
    unsigned long misses = 0;
    while (misses < searchAttempts) {
        window = FindWindowA(className, title);
        if (window != nullptr) {
            break;
        }
        ++misses;
        Sleep(searchPause);
    }
    logLine({"FindXWindow = ", toString(window), "FindWindow attempts = ", toString(misses, 10)});
    return window;
}

bool IsXFileRunning(const char* name) {
    std::string mutexName = VOK_MUTEX_PREFIX;
    for (const char* character = name; *character != '\0'; ++character) {
        mutexName += static_cast<char>(std::toupper(static_cast<unsigned char>(*character)));
    }
    logLine({"Trying to open mutex :", mutexName});
    try {
        const Mutex mutex(mutexName);
        logLine("Nemb is already running");
        return true;
    } catch (const Win32Exception& failure) {
        logLine({"Error Openining Mutex rc=", failure.getErrorText()});
        return false;
    }
}

}  // namespace vok
