#include "cli/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace velamo {

std::string progressLine(double finishedShare, std::int64_t files, double seconds) {
    constexpr double width = 24;
    const auto filled = static_cast<std::size_t>(finishedShare * width);
    const auto filesPerSecond = seconds > 0 ? std::llround(static_cast<double>(files) / seconds) : 0;
    std::ostringstream line;
    line << '[' << std::string(filled, '#') << std::string(static_cast<std::size_t>(width) - filled, '-') << "] "
         << std::setw(3) << static_cast<int>(finishedShare * 100) << " %  " << files << " files  " << filesPerSecond
         << " files/s";
    return line.str();
}

void ProgressBar::show(double finishedShare, std::int64_t files) {
    constexpr std::chrono::milliseconds pause{100};
    if (!isShown_) return;
    const auto now = Clock::now();
    if (now - lastDrawing_ < pause) return;
    lastDrawing_ = now;
    hide();
    terminal_ << progressLine(std::min(finishedShare, 1.0), files, std::chrono::duration<double>(now - start_).count())
              << std::flush;
    isDrawn_ = true;
}

void ProgressBar::hide() {
    if (isDrawn_) terminal_ << "\r\x1b[K" << std::flush;
    isDrawn_ = false;
}

}  // namespace velamo
