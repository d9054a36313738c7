// Does what must not be done, as its argument says, and lives on when nothing stops it.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

namespace {

// A value that no compiler knows beforehand.
template <typename T>
T hidden(T value) {
    volatile T copy = value;
    return copy;
}

int overflow() {
    return hidden(std::numeric_limits<int>::max()) + hidden(1);
}

int shift() {
    return 1 << hidden(40);
}

int beyondArray() {
    const int numbers[] = {1, 2, 3};
    return numbers[hidden(3)];
}

int misaligned() {
    alignas(int) const char bytes[8] = {};
    return *reinterpret_cast<const int*>(bytes + hidden(1));
}

int beyondVector() {
    const std::vector<int> numbers(3);
    return numbers[hidden(size_t{3})];
}

int beyondText() {
    const std::string_view text = "abc";
    return text[hidden(size_t{3})];
}

struct Misdeed {
    const char* name;
    int (*commit)();
};

constexpr Misdeed misdeeds[] = {{"overflow", overflow},          {"shift", shift},
                                {"beyond-array", beyondArray},   {"misaligned", misaligned},
                                {"beyond-vector", beyondVector}, {"beyond-text", beyondText},
                                {"none", [] { return 0; }}};

}  // namespace

int main(int count, char** words) {
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    for (const Misdeed& misdeed : misdeeds) {
        if (count == 2 && std::strcmp(words[1], misdeed.name) == 0) {
            std::printf("result %d\n", misdeed.commit());
            return 0;
        }
    }
    return 2;
}
