// What an exception of the library must say.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/exception.h"

namespace vok::test {

// Runs `work` and expects a Win32Exception with exactly these fields.
template <class Work>
void expectThrown(const Work& work, const std::string& message, std::uint32_t code,
                  const std::string& source, std::uint32_t line) {
    try {
        work();
        ADD_FAILURE() << "nothing was thrown; expected: " << message;
    } catch (const Win32Exception& thrown) {
        EXPECT_EQ(thrown.getMessage(), message);
        EXPECT_EQ(thrown.getErrorCode(), code) << message;
        EXPECT_EQ(thrown.sourceFile(), source) << message;
        EXPECT_EQ(thrown.line(), line) << message;
    }
}

}  // namespace vok::test
