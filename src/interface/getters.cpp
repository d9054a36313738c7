// The two exports that read the record. How they are decorated is the header's and the linker's.

#include <vok/vok.h>

VOK_GETTER HWND __cdecl VOKGetDral(VKDATA* record) {
    return record == nullptr ? nullptr : static_cast<HWND>(record->hDRAL);
}

VOK_GETTER HWND __cdecl VOKGetNemb(VKDATA* record) {
    return record == nullptr ? nullptr : static_cast<HWND>(record->hNEMB);
}
