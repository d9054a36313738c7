/**
 * @file neighbour.h
 * A process that stands in the library's way.
 */
#pragma once

#include <windows.h>

#include <string>

namespace vok::test {

class Neighbour {
  public:
    /// @param what "pipe", "file" or "mutex", which it takes before the constructor returns.
    Neighbour(const std::string& what, const std::string& name);
    ~Neighbour();
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;

    [[nodiscard]] bool holds() const { return holds_; }

    /// It dies without giving back what it holds.
    void die();

  private:
    HANDLE ready_;
    HANDLE go_;
    HANDLE process_ = nullptr;
    bool holds_ = false;
};

}  // namespace vok::test
