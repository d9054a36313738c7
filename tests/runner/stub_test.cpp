// Looks to run-tests like a test program on Windows: one test that has seen a row, and one that
// says so and fails.
#include <cstdio>
#include <cstring>

int main(int count, char** words) {
    const char* const word = count > 1 ? words[1] : "";
    if (std::strcmp(word, "--gtest_list_tests") == 0) {
        std::puts("Stub.\n  Passes\n  Fails");
        return 0;
    }
    std::puts("[==========] Running 1 test from 1 test suite.");
    const bool passes = std::strcmp(word, "--gtest_filter=Stub.Passes") == 0;
    std::printf("seen on Windows: %s\n",
                passes ? "sessions | there are two" : "spooler | there is none");
    return passes ? 0 : 1;
}
