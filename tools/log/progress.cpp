#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "text.h"

namespace vok::log {

namespace {

constexpr std::size_t barWidth = 30;
constexpr std::size_t nameWidth = 24;
constexpr std::chrono::milliseconds interval(100);

}  // namespace

std::string progressText(const Progress& progress, const std::string& file) {
    const std::string name = shortened(toUtf8(file), nameWidth);
    if (progress.size == 0) {
        return fmt::format("{}  {} lines", name, grouped(progress.lines));
    }
    const std::uint64_t position = std::min(progress.position, progress.size);
    const std::size_t filled = static_cast<std::size_t>(position * barWidth / progress.size);
    return fmt::format("{}  [{}{}] {:>3}%  {} lines", name, std::string(filled, '#'),
                       std::string(barWidth - filled, '.'), position * 100 / progress.size,
                       grouped(progress.lines));
}

ProgressBar::ProgressBar(std::vector<std::string> files, bool wanted)
    : files_(std::move(files)), wanted_(wanted && isatty(fileno(stderr)) != 0) {}

ProgressBar::~ProgressBar() {
    if (drawn_ > 0) {
        static_cast<void>(std::fprintf(stderr, "\r%*s\r", static_cast<int>(drawn_), ""));
    }
}

void ProgressBar::show(const Progress& progress) {
    const auto now = std::chrono::steady_clock::now();
    if (!wanted_ || now < next_) {
        return;
    }
    next_ = now + interval;
    const std::string text = progressText(progress, files_[progress.file]);
    // A bar that can't be drawn is no reason to stop.
    static_cast<void>(std::fprintf(stderr, "\r%-*s", static_cast<int>(drawn_), text.c_str()));
    static_cast<void>(std::fflush(stderr));
    drawn_ = std::max(drawn_, text.size());
}

}  // namespace vok::log
