// What the reader has to say about a log: stable names, each with its place in
// docs/troubleshooting.md, which is where all of them and their texts come from.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "embedded.h"
#include "messages.h"

namespace vok::log {

enum class Weight : std::uint8_t {
    Note,     // worth knowing
    Warning,  // went otherwise than it should, and the job was served all the same
    Problem,  // a document was not printed, or a companion did not hear of an event
};
template <>
inline constexpr const char* words<Weight>[] = {"note", "warning", "problem"};

struct FindingText {
    FindingId id;
    std::string name;  // also the anchor
    std::string title;
    Weight weight;
    std::string meaning;
    std::string action;
};

// One text for every id, in their order.
std::span<const FindingText> findings();

const FindingText& textOf(FindingId id);

// Where the finding is explained.
std::string pageOf(FindingId id);

}  // namespace vok::log
