#include "common/window.h"

namespace vok::tools {

bool answersMessages(HWND window, DWORD limit) {
    DWORD_PTR ignored = 0;
    return SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_NORMAL, limit, &ignored) != 0;
}

}  // namespace vok::tools
