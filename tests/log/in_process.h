// Reads logs in the test's own process, for tests that read thousands.
#pragma once

#include <string>
#include <vector>

#include "assembler.h"

namespace vok::test {

struct Reading {
    std::vector<log::Job> jobs;
    log::Summary summary;
};

// What is in a log of these bytes.
Reading readHere(const std::string& bytes);

}  // namespace vok::test
