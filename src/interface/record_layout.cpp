// The job record is shared with print processors built by other compilers: its layout may not move.

#include <vok/companion.h>

#include <cstddef>

static_assert(offsetof(VKDATA, hNEMB) == 0);
static_assert(offsetof(VKDATA, hDRAL) == 8);
static_assert(offsetof(VKDATA, hNEMBProc) == 16);
static_assert(offsetof(VKDATA, hDRALProc) == 24);
static_assert(offsetof(VKDATA, hNEMBThread) == 32);
static_assert(offsetof(VKDATA, hDRALThread) == 40);
static_assert(offsetof(VKDATA, epDoc) == 48);
static_assert(offsetof(VKDATA, dralMode) == 52);
static_assert(offsetof(VKDATA, nembMode) == 56);
static_assert(offsetof(VKDATA, dralTitleSuffix) == 60);
static_assert(sizeof(VKDATA) == VOK_RECORD_SIZE);

// So that the name of DRAL's hidden window always fits.
static_assert(sizeof VOK_DRAL_HIDDEN - 1 + VOK_TITLE_SUFFIX_SIZE == VOK_NAME_SIZE);

static_assert(sizeof(VokNembFrame) == 556);
static_assert(sizeof(VokDralFrame) == 36);
static_assert(sizeof(VokPipeReply) == 4);
