/**
 * @file job_record.h
 * The job record of one job, zeroed and filled in, and what the caller has to release of it.
 */
#pragma once

#include <vok/vok.h>

#include <string>

namespace vok::sample {

/// Owns a record. When the job is over it closes the process and thread handles that the library
/// stored, and a pipe that is still open because a companion never ended its WAITPRINT.
class JobRecord {
  public:
    explicit JobRecord(const std::string& friendlyName);
    ~JobRecord();
    JobRecord(const JobRecord&) = delete;
    JobRecord& operator=(const JobRecord&) = delete;

    [[nodiscard]] VKDATA* get() { return &data_; }
    VKDATA* operator->() { return &data_; }

    /// Closes the pipes that a launch made, and forgets the windows it found. Needed before a
    /// launch is tried again, which makes new pipes and would lose the old ones.
    void dropCompanions();

  private:
    VKDATA data_{};
};

}  // namespace vok::sample
