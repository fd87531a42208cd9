#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "cli/console.h"

namespace velamo {

/// The line that shows a run: "[########----------------]  33 %  12345 files  5321 files/s". On a terminal of few
/// columns the bar is shorter, then the line says less: it never fills all of them.
[[nodiscard]] std::string progressLine(double finishedShare, std::int64_t files, double seconds, int columns);

/// Keeps the last line of the terminal for problems showing how far a run is; silent where no person looks on.
class ProgressBar {
public:
    explicit ProgressBar(const Console& console)
        : terminal_(console.problems), isShown_(console.problemsIsTerminal), room_(console.roomForProblems) {}
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
    std::function<TerminalSize()> room_;
    bool isDrawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawing_ = start_;
};

}  // namespace velamo
