// The two exports that read the record.

#include <vok/vok.h>

extern "C" HWND VOKGetDral(VKDATA* record) {
    return record == nullptr ? nullptr : static_cast<HWND>(record->hDRAL);
}

extern "C" HWND VOKGetNemb(VKDATA* record) {
    return record == nullptr ? nullptr : static_cast<HWND>(record->hNEMB);
}
