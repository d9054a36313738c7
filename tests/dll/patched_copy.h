// A copy of the shipped DLL in which one import has another name, for the system's own loader.
#pragma once
#include <windows.h>

#include <string>

namespace vok::test {

class PatchedCopy {
  public:
    // `instead` must not be longer than `import`. Throws std::runtime_error when the DLL cannot be
    // read or does not import it, or the copy cannot be written.
    PatchedCopy(const std::string& import, const std::string& instead);
    ~PatchedCopy();
    PatchedCopy(const PatchedCopy&) = delete;
    PatchedCopy& operator=(const PatchedCopy&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace vok::test
