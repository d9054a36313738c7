// Writes lines into the library's log: live_log_writer LIBRARY NAME CALLS
#include <vok/vok.h>

#include <bit>
#include <cstdlib>
#include <string>

int main(int count, char** words) {
    if (count != 4)
        return 2;
    const HMODULE library = LoadLibraryA(words[1]);
    const auto send =
        std::bit_cast<VOKSendMsgExFn>(GetProcAddress(library, VOK_EXPORT_SEND_MSG_EX));
    if (send == nullptr)
        return 1;
    const BYTE data = 0;
    for (int call = 0; call < std::atoi(words[3]); ++call) {
        const std::string name = words[2] + std::string("-") + std::to_string(call);
        // No companion is named: the call is refused after it was logged.
        send(name.c_str(), nullptr, 0, WM_USER, &data, sizeof data);
    }
    FreeLibrary(library);
    return 0;
}
