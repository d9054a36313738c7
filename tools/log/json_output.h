// The account for programs.
#ifndef VOK_LOG_JSON_OUTPUT_H
#define VOK_LOG_JSON_OUTPUT_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "assembler.h"
#include "writer.h"

namespace vok::log {

// Keeps the order in which members are written.
using JsonValue = nlohmann::ordered_json;

// One line of text.
std::string toLine(const JsonValue& value);

JsonValue durationToJson(const Duration& duration);
JsonValue timeToJson(Time time);
JsonValue toJson(const TimeSplit& time);
JsonValue toJson(const Job& job, const Exchange& exchange);
JsonValue toJson(const Job& job, const ExchangeGap& gap);
// The job's events and gaps in their order; a WAITPRINT gets "waitMs", until it was asked again.
JsonValue listEvents(const Job& job, const std::function<JsonValue(const Exchange&)>& ofEvent,
                     const std::function<JsonValue(const ExchangeGap&)>& ofGap);
JsonValue toJson(const Job& job, const std::vector<std::string>& files);
JsonValue toJson(const Summary& summary);

// An object with "jobs", one a line and written as soon as each is over, and "summary".
class JsonOutput final : public Sink {
  public:
    JsonOutput(Writer& writer, bool problemsOnly, std::vector<std::string> files);
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    Writer& writer_;
    bool problemsOnly_;
    bool first_ = true;
    std::vector<std::string> files_;
};

// What is shown where only problems are wanted: all that went otherwise than it should.
bool wentWrong(const Job& job);

}  // namespace vok::log

#endif
