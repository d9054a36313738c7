// A log of any length, with everything in it that a real one may have.
#pragma once

#include <cstdint>

#include "log_writer.h"

namespace vok::test {

// Writes whole jobs of two processes with three threads each, mixed, until there are at least so
// many lines; with torn and foreign lines, records of other programs, and some without a clock.
void writeBigLog(const LogWriter::Out& out, std::uint64_t lines);

}  // namespace vok::test
