#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace velamo {

/// The line that shows a run: "[########----------------]  33 %  12345 files  5321 files/s".
[[nodiscard]] std::string progressLine(double finishedShare, std::int64_t files, double seconds);

/// Keeps the last line of a terminal showing how far a run is; silent where no person looks on.
class ProgressBar {
public:
    ProgressBar(std::ostream& terminal, bool isShown) : terminal_(terminal), isShown_(isShown) {}
    ~ProgressBar() { hide(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Draws anew, a few times a second at most, so that drawing costs nothing.
    void show(double finishedShare, std::int64_t files);
    /// Clears the line for other text.
    void hide();

private:
    using Clock = std::chrono::steady_clock;

    std::ostream& terminal_;
    bool isShown_;
    bool isDrawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawing_ = start_;
};

}  // namespace velamo
