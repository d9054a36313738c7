// This build ends what an ordinary one lets go on; the other tests rely on it.
#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <iterator>
#include <string>

#include "live/child.h"

namespace vok::test {
namespace {

constexpr unsigned long abortStatus = 3;

Outcome commit(const std::string& misdeed) {
    return runProgram("\"" TRAPPED "\" " + misdeed);
}

TEST(Hardened, ProgramWithoutMisdeedLives) {
    const Outcome outcome = commit("none");
    EXPECT_EQ(outcome.status, 0U);
    EXPECT_EQ(outcome.output, "result 0\r\n");
}

TEST(Hardened, UndefinedBehaviourIsTrapped) {
    for (const char* misdeed : {"overflow", "shift", "beyond-array", "misaligned"}) {
        const Outcome outcome = commit(misdeed);
        EXPECT_EQ(outcome.status, DWORD{STATUS_ILLEGAL_INSTRUCTION}) << misdeed;
        EXPECT_EQ(outcome.output, "") << misdeed;
    }
}

TEST(Hardened, MisusedLibraryTypesAreStopped) {
    for (const char* misdeed : {"beyond-vector", "beyond-text"}) {
        const Outcome outcome = commit(misdeed);
        EXPECT_EQ(outcome.status, abortStatus) << misdeed;
        EXPECT_EQ(outcome.output.find("result"), std::string::npos) << outcome.output;
    }
}

// What stops it is in the library under test as well, which is built apart from its tests.
TEST(Hardened, LibraryUnderTestIsTheHardenedOne) {
    const std::string library = fileText(productFolder() + "/" VOK_MODEL_PREFIX "vok.dll");
    const std::string trap = "\x0F\x0B";
    size_t traps = 0;
    for (size_t at = library.find(trap); at != std::string::npos; at = library.find(trap, at + 2)) {
        ++traps;
    }
    constexpr size_t unguarded = 100;
    EXPECT_GT(traps, unguarded);
    EXPECT_NE(library.find("Assertion '%s' failed"), std::string::npos);
}

}  // namespace
}  // namespace vok::test
