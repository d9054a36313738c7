// The account for programs, of which others take parts.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "job.h"
#include "summary.h"

namespace vok::log {

// Keeps the order in which members are written.
using JsonValue = nlohmann::ordered_json;

// One line of text.
std::string toLine(const JsonValue& value);

template <typename Number>
JsonValue toJson(const std::optional<Number>& number) {
    return number ? JsonValue(*number) : JsonValue(nullptr);
}
JsonValue timeToJson(Time time);
// Null where they are not known: without a clock, or of jobs that can't be told apart.
JsonValue timeOf(const Job& job);
JsonValue pagesOf(const Job& job);
JsonValue toJson(const Launch& launch);
// What went wrong first, or null.
JsonValue failureOf(const Job& job);
JsonValue toJson(const Job& job, const Exchange& exchange);
JsonValue toJson(const Job& job, const ExchangeGap& gap);
// The job's events and gaps in their order; a WAITPRINT gets "waitMs", until it was asked again.
using EventWriter = std::function<JsonValue(const Job&, const Exchange&)>;
using GapWriter = std::function<JsonValue(const Job&, const ExchangeGap&)>;
JsonValue listEvents(const Job& job, const EventWriter& ofEvent, const GapWriter& ofGap);
JsonValue toJson(const Job& job, const std::vector<std::string>& files);
JsonValue toJson(const Summary& summary);

}  // namespace vok::log
