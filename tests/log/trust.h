// What the tests of the reader's trustworthiness share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "log_writer.h"
#include "support.h"

namespace vok::test {

// A log that the test writes, and what the reader tells of it.
class Trust : public testing::Test {
  protected:
    std::string text_;
    LogWriter log_{[this](std::string_view line) { text_ += line; }};

    nlohmann::json account(std::vector<std::string> arguments = {}) {
        return accountOf(text_, arguments);
    }

    RunResult table(std::vector<std::string> arguments = {}) {
        const TemporaryFile file;
        file.write(text_);
        arguments.push_back(file.path());
        return runReader(arguments);
    }

    // The log goes on without the job.
    void later(std::int64_t milliseconds) {
        log_.wait(milliseconds);
        log_.record("DEMODRAL", "a line of a companion");
    }

    // The clock is set in the middle of a job of some five seconds.
    void jobAcrossSetClock(std::int64_t hours, unsigned dral, unsigned nemb) {
        log_.launchByPipe("P", dral, nemb);
        log_.pipeEvent("Dral", "OPENJOB", dral, "YESPRINT");
        log_.wait(4900);
        log_.setClock(20005000 + hours * 3600000);
        log_.pipeEvent("Dral", "CLOSEJOB", dral, "YESPRINT");
        log_.pipeEvent("Nemb", "CLOSEJOB", nemb, "YESPRINT");
    }

    void ask(const std::string& side, const std::string& text) {
        log_.trace("VOKSend" + side + "Msg");
        log_.detail(text);
    }
};

inline const nlohmann::json* findingOf(const nlohmann::json& job, const std::string& message) {
    for (const nlohmann::json& finding : job["findings"]) {
        if (finding["message"] == message) {
            return &finding;
        }
    }
    return nullptr;
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace vok::test
