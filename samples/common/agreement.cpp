#include "agreement.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vok::sample {

std::string titleSuffix(const std::string& friendlyName) {
    constexpr std::size_t longest_class_name = 255;
    constexpr std::size_t room = longest_class_name - (sizeof(VOK_DRAL_HIDDEN) - 1);
    static_assert(room < VOK_TITLE_SUFFIX_SIZE);
    return friendlyName.substr(0, room);
}

std::string eventName(DWORD event) {
    switch (event) {
        case SM_OPENJOB:
            return "OPENJOB";
        case SM_CLOSEJOB:
            return "CLOSEJOB";
        case SM_STARTPAGE:
            return "STARTPAGE";
        case SM_ENDPAGE:
            return "ENDPAGE";
        case SM_CANCELJOB:
            return "CANCELJOB";
        default:
            return std::to_string(event);
    }
}

std::string replyName(LONG reply) {
    switch (reply) {
        case NOPRINT:
            return "NOPRINT";
        case YESPRINT:
            return "YESPRINT";
        case WAITPRINT:
            return "WAITPRINT";
        default:
            return std::to_string(reply);
    }
}

LONG blockSum(const void* block, std::size_t size) {
    DWORD sum = 2166136261U;
    for (const BYTE* byte = static_cast<const BYTE*>(block); size > 0; ++byte, --size)
        sum = (sum ^ *byte) * 16777619U;
    return static_cast<LONG>(sum);
}

void copyText(char* field, std::size_t size, const std::string& text) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

}  // namespace vok::sample
