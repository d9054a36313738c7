// A configuration library that breaks its contract, as the variable VOK_HOSTILE_CONFIG of its
// process says. The path that it should tell is the variable VOK_HOSTILE_PATH.
#include <vok/config_library.h>

#include <array>
#include <cstring>
#include <string>

namespace {

std::string variable(const char* name) {
    std::array<char, 1024> text{};
    GetEnvironmentVariableA(name, text.data(), static_cast<DWORD>(text.size()));
    return text.data();
}

}  // namespace

extern "C" __declspec(dllexport) DWORD GetConfigData(DWORD /*first*/, DWORD /*item*/,
                                                     DWORD /*third*/, char* buffer, DWORD* size) {
    const std::string how = variable("VOK_HOSTILE_CONFIG");
    const std::string path = variable("VOK_HOSTILE_PATH");
    if (buffer == nullptr) {
        *size = how == "huge" ? MAXDWORD : how == "empty" ? 0 : 4;
        return how == "refuses" ? ERROR_SUCCESS : static_cast<DWORD>(VOK_CONFIG_SIZE_REPORTED);
    }
    // Whatever size it told: within the 272 bytes that a caller has at least.
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    if (how == "unended")
        std::memset(buffer, 'x', 272);
    return ERROR_SUCCESS;
}
