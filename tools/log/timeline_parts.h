// The files of the timeline page, built into the program.
#ifndef VOK_LOG_TIMELINE_PARTS_H
#define VOK_LOG_TIMELINE_PARTS_H

#include <string_view>

namespace vok::log {

extern const std::string_view timelinePage;
extern const std::string_view timelineStyle;
extern const std::string_view timelineScript;

}  // namespace vok::log

#endif
