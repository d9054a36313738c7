// What the measuring program can do; each prints its results as lines of JSON.
#pragma once

namespace vok::bench {

int countCalls();
int timeSimulated();
int growSimulated();
int timeLive(const char* route);
int growLive();
int timeLoading();

// Bytes of memory that this process has in use.
double memoryInUse();

}  // namespace vok::bench
