/**
 * @file agreement.h
 * What our print processor and our companions agree on among themselves. The library carries it
 * and never looks at it: the layout of the event blocks, the end-of-page event and the rule for
 * the text behind "DRAL Hidden Window-".
 */
#pragma once

#include <vok/companion.h>
#include <vok/vok.h>

#include <string>

namespace vok::sample {

/// A page ended. NEMB alone hears of it: the library sends DRAL no page event but the start.
inline constexpr DWORD SM_ENDPAGE = 1136;

#pragma pack(push, 1)

/// DRAL's block. On the pipe no identifier precedes it, so the block itself carries the event.
struct DralBlock {
    DWORD event;
    DWORD job;
    DWORD page;  ///< Counted from 1; 0 for an event that is no page's.
    char reserved[24];
};

/// NEMB's block: the printer's name first, because the library looks NEMB's window up by it.
struct NembBlock {
    char printer[VOK_NAME_SIZE];
    DWORD event;
    DWORD job;
    DWORD page;
    char document[VOK_NAME_SIZE];
    char reserved[20];
};

#pragma pack(pop)

static_assert(sizeof(DralBlock) == VOK_DRAL_BLOCK_SIZE);
static_assert(sizeof(NembBlock) == VOK_NEMB_BLOCK_SIZE);

/// The record's `dralTitleSuffix`, and what DRAL puts behind "DRAL Hidden Window-": the printer's
/// friendly name, cut so that class names keep within the 255 characters that the system allows.
std::string titleSuffix(const std::string& friendlyName);

/// "OPENJOB", "STARTPAGE", …; the number for an event of somebody else.
std::string eventName(DWORD event);

/// "NOPRINT", "YESPRINT", "WAITPRINT"; the number for any other reply.
std::string replyName(LONG reply);

/// A number that tells two blocks apart, whichever of their bytes differ (FNV-1a, 32 bits).
LONG blockSum(const void* block, std::size_t size);

/// Copies a text into a field of `size` bytes, cut if need be, always with a NUL.
void copyText(char* field, std::size_t size, const std::string& text);

}  // namespace vok::sample
