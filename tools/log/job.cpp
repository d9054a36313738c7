#include "job.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace vok::log {

Duration between(Time start, Time end) {
    if (start == noTime || end == noTime || end < start) {
        return std::nullopt;
    }
    return end - start;
}

void Job::add(Finding finding) {
    findingIds.set(static_cast<std::size_t>(finding.id));
    if (findings.size() < maxFindings) {
        findings.push_back(std::move(finding));
    } else {
        ++findingsOmitted;
    }
}

JobEnd Job::result() const {
    if (has(FindingId::Refused) || has(FindingId::NoWindow)) {
        return JobEnd::Refused;
    }
    if (cancelled) {
        return JobEnd::Cancelled;
    }
    if (closed) {
        return JobEnd::Printed;
    }
    return exchanges.size() == 0 ? JobEnd::NoEvents : JobEnd::Unfinished;
}

Duration Job::duration() const {
    const Duration byClock = between(start, end);
    if (byClock || !startTick || !endTick) {
        return byClock;
    }
    // The tick counts are 32 bits wide and wrap.
    return static_cast<std::int64_t>(*endTick - *startTick);
}

Weight Job::weight() const {
    Weight heaviest = Weight::Note;
    for (const Finding& finding : findings) {
        heaviest = std::max(heaviest, textOf(finding.id).weight);
    }
    return heaviest;
}

const Finding* Job::firstFailure() const {
    const Weight heaviest = weight();
    const auto found = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
        return textOf(finding.id).weight == heaviest;
    });
    return found == findings.end() ? nullptr : &*found;
}

const char* toText(JobEnd end) {
    switch (end) {
        case JobEnd::Printed:
            return "printed";
        case JobEnd::Refused:
            return "refused";
        case JobEnd::Cancelled:
            return "cancelled";
        case JobEnd::Unfinished:
            return "unfinished";
        default:
            return "no events";
    }
}

const char* toText(Origin origin) {
    switch (origin) {
        case Origin::Running:
            return "found running";
        case Origin::Started:
            return "started";
        case Origin::NotReached:
            return "not reached";
        default:
            return "?";
    }
}

const char* toText(Start start) {
    switch (start) {
        case Start::AsUser:
            return "as the user";
        case Start::AsSpooler:
            return "with the spooler's token";
        case Start::WinExec:
            return "by WinExec";
        case Start::CreateProcess:
            return "by CreateProcess";
        default:
            return "";
    }
}

const char* toText(Delivery delivery) {
    switch (delivery) {
        case Delivery::Answered:
            return "answered";
        case Delivery::NotSent:
            return "not sent";
        case Delivery::Undelivered:
            return "undelivered";
        case Delivery::NoAnswer:
            return "no answer";
        case Delivery::Unseen:
            return "not logged";
        default:
            return "open";
    }
}

const char* toText(LaunchResult result) {
    switch (result) {
        case LaunchResult::Open:
            return "unfinished";
        case LaunchResult::Reached:
            return "both reached";
        case LaunchResult::NotReached:
            return "not both reached";
        default:
            return "not in the log";
    }
}

std::string replyText(std::optional<std::int64_t> reply) {
    if (!reply) {
        return "";
    }
    switch (*reply) {
        case NoPrint:
            return "NOPRINT";
        case YesPrint:
            return "YESPRINT";
        case WaitPrint:
            return "WAITPRINT";
        default:
            return std::to_string(*reply);
    }
}

}  // namespace vok::log
