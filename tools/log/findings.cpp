#include "findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "embedded.h"

namespace vok::log {

namespace {

// Takes what stands before the mark off the page's front, and the mark.
std::string take(std::string_view& page, std::string_view mark) {
    const std::size_t end = page.find(mark);
    if (end == std::string_view::npos) {
        throw std::logic_error(fmt::format("a message's \"{}\" is missing", mark));
    }
    const std::string_view text = page.substr(0, end);
    page.remove_prefix(end + mark.size());
    return std::string(text);
}

// Each stands there as `<a id="name"></a>`, its title, `name` (weight), and what follows.
std::vector<FindingText> readMessages() {
    std::vector<FindingText> texts;
    for (std::string_view page = messagesPage; !page.empty();) {
        FindingText text = {static_cast<FindingId>(texts.size()), {}, {}, Weight::Note, {}, {}};
        const bool begins = take(page, "\"") == "<a id=";
        text.name = take(page, "\"></a>\n### ");
        text.title = take(page, "\n\n`");
        const bool named = take(page, "` (") == text.name;
        const auto* weight = std::ranges::find(words<Weight>, take(page, "). "));
        if (!begins || !named || weight == std::end(words<Weight>)) {
            throw std::logic_error(text.name + " is not written as the others are");
        }
        text.weight = static_cast<Weight>(weight - std::begin(words<Weight>));
        text.meaning = take(page, "\n\n**What to do:** ");
        text.action = take(page, "\n\n");
        texts.push_back(text);
    }
    return texts;
}

}  // namespace

std::span<const FindingText> findings() {
    static const std::vector<FindingText> texts = readMessages();
    return texts;
}

const FindingText& textOf(FindingId id) {
    return findings()[static_cast<std::size_t>(id)];
}

std::string pageOf(FindingId id) {
    return fmt::format("docs/troubleshooting.md#{}", textOf(id).name);
}

}  // namespace vok::log
