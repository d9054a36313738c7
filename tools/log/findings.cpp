#include "findings.h"

#include <fmt/format.h>

#include <cstddef>
#include <span>
#include <string>

#include "finding_texts.h"

namespace vok::log {

std::span<const FindingText> findings() {
    return findingTexts;
}

const FindingText& textOf(FindingId id) {
    return findingTexts[static_cast<std::size_t>(id)];
}

const char* toText(Weight weight) {
    constexpr const char* texts[] = {"note", "warning", "problem"};
    return texts[static_cast<std::size_t>(weight)];
}

std::string pageOf(FindingId id) {
    return fmt::format("docs/troubleshooting.md#{}", textOf(id).name);
}

std::string findingsAsMarkdown() {
    std::string page;
    for (const FindingText& finding : findingTexts) {
        page += fmt::format(
            "<a id=\"{}\"></a>\n"
            "### {}\n\n"
            "`{}` ({}). {}\n\n"
            "**What to do:** {}\n\n",
            finding.name, finding.title, finding.name, toText(finding.weight), finding.meaning,
            finding.action);
    }
    return page;
}

}  // namespace vok::log
