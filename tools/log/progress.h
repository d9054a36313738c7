// How far the reader is, on a terminal.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "log_reader.h"

namespace vok::log {

// The bar as text, without the return to the line's beginning.
std::string progressText(const Progress& progress, const std::string& file);

// Draws on the standard error output, and only if that is a terminal. Leaves a clean line behind.
class ProgressBar {
  public:
    ProgressBar(std::vector<std::string> files, bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(const Progress& progress);

  private:
    std::vector<std::string> files_;
    bool wanted_;
    std::size_t drawn_ = 0;  // characters on the line
    std::chrono::steady_clock::time_point next_;
};

}  // namespace vok::log
