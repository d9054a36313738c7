// The functions that stand in for the system's, by subject.
#pragma once
#include <span>
#include <string_view>

namespace vok::test {

struct Substitute {
    std::string_view name;
    void* function;
};

template <class F>
Substitute substitute(const char* name, F* function) {
    return {name, reinterpret_cast<void*>(function)};
}

std::span<const Substitute> clockSubstitutes();
std::span<const Substitute> versionSubstitutes();
std::span<const Substitute> moduleSubstitutes();
std::span<const Substitute> fileSubstitutes();
std::span<const Substitute> fileStreamSubstitutes();
std::span<const Substitute> mutexSubstitutes();
std::span<const Substitute> pipeSubstitutes();
std::span<const Substitute> processSubstitutes();
std::span<const Substitute> tokenSubstitutes();
std::span<const Substitute> securitySubstitutes();
std::span<const Substitute> registrySubstitutes();
std::span<const Substitute> desktopSubstitutes();
std::span<const Substitute> spoolerSubstitutes();
std::span<const Substitute> lockSubstitutes();

// Null when the function has no substitute.
void* substituteFor(std::string_view name);

// Entry points that are only looked up at run time; null when the name is none of them.
void* lookedUpFunction(std::string_view name);

}  // namespace vok::test
