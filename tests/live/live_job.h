/**
 * @file live_job.h
 * One job as a test drives it: each call by itself, with blocks that differ in every byte.
 */
#pragma once

#include <string>

#include "common/agreement.h"
#include "job/job_record.h"
#include "job/vok_library.h"

namespace vok::test {

class LiveJob {
  public:
    LiveJob(const sample::VokCalls& calls, const std::string& printer, DWORD number);

    /// One launch.
    BOOL launch();

    /// Launches until both companions are there, as a print processor does. A bound that only a
    /// companion that never comes reaches.
    bool reach();

    /// Sends an event and keeps the block's sum.
    LONG dral(DWORD event);
    LONG nemb(DWORD event);

    /// What a companion answers that was told to answer by the sum of the last block.
    [[nodiscard]] LONG sum() const { return sum_; }

    [[nodiscard]] bool opened() { return (record->epDoc & VOK_EPDOC_OPENJOB) != 0; }
    void setOpened() { record->epDoc |= VOK_EPDOC_OPENJOB; }

    sample::JobRecord record;
    DWORD page = 0;

  private:
    const sample::VokCalls& calls_;
    std::string printer_;
    DWORD number_;
    LONG sum_ = 0;
};

}  // namespace vok::test
