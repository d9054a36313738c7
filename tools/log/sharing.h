// Which of several jobs a line belongs to, where neither process nor thread numbers tell it.
#ifndef VOK_LOG_SHARING_H
#define VOK_LOG_SHARING_H

#include "job.h"

namespace vok::log {

// Whether the job could have written this line next: its handle, what it waits for and what it has
// heard already speak for it or against it.
bool fits(const Job& job, const Message& message);

// Whether nothing more is to come but what follows an answer.
bool isThrough(const Job& job);

// Whether the line is told by the handle in it to be this job's.
bool namesHandle(const Job& job, const Message& message);

// Takes from the job what is only a guess, now that it can't be told apart from others. What a
// single line says by itself is handed over.
std::vector<Finding> dropGuesses(Job& job);

}  // namespace vok::log

#endif
