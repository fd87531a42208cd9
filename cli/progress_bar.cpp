#include "cli/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string_view>

#include "velamo/platform/text/harmless_output.h"

namespace velamo {

std::string progressLine(double finishedShare, std::int64_t files, double seconds, int columns) {
    constexpr std::size_t longestBar = 24;
    constexpr std::size_t shortestBar = 8;
    const auto filesPerSecond = seconds > 0 ? std::llround(static_cast<double>(files) / seconds) : 0;
    std::ostringstream share;
    share << std::setw(3) << static_cast<int>(finishedShare * 100) << " %";
    const std::string withFiles = share.str() + "  " + std::to_string(files) + " files";
    const std::string withSpeed = withFiles + "  " + std::to_string(filesPerSecond) + " files/s";
    // The last column stays free: many terminals begin a new line when it is filled.
    const auto room = static_cast<std::size_t>(std::max(columns - 1, 0));
    for (const std::string& words : {withSpeed, withFiles, share.str()}) {
        constexpr std::string_view frame = "[] ";
        if (words.size() + frame.size() + shortestBar > room) continue;
        const std::size_t bar = std::min(longestBar, room - words.size() - frame.size());
        const auto filled = static_cast<std::size_t>(finishedShare * static_cast<double>(bar));
        return '[' + std::string(filled, '#') + std::string(bar - filled, '-') + "] " + words;
    }
    return share.str().size() <= room ? share.str() : "";
}

void ProgressBar::show(double finishedShare, std::int64_t files) {
    constexpr std::chrono::milliseconds pause{100};
    if (!isShown_) return;
    const auto now = Clock::now();
    if (now - lastDrawing_ < pause) return;
    lastDrawing_ = now;
    hide();
    terminal_ << progressLine(std::min(finishedShare, 1.0), files, std::chrono::duration<double>(now - start_).count(),
                              room_().columns)
              << std::flush;
    isDrawn_ = true;
}

void ProgressBar::hide() {
    if (isDrawn_) {
        writeAsIs(terminal_, "\r\x1b[K");
        terminal_ << std::flush;
    }
    isDrawn_ = false;
}

}  // namespace velamo
