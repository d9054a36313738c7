// DRAL's hidden window.
#pragma once

#include <vok/companion.h>

#include "support/name_buffer.h"

namespace vok {

// Its class, which is also its title; the record's suffix is read no further than its room.
inline NameBuffer hiddenWindowName(const VKDATA& record) {
    NameBuffer name(VOK_DRAL_HIDDEN);
    name.append(record.dralTitleSuffix, VOK_TITLE_SUFFIX_SIZE);
    return name;
}

}  // namespace vok
