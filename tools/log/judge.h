// What a job as a whole shows, beyond what single lines say.
#ifndef VOK_LOG_JUDGE_H
#define VOK_LOG_JUDGE_H

#include "job.h"

namespace vok::log {

// The job is over, or the log is.
void judge(Job& job);

}  // namespace vok::log

#endif
