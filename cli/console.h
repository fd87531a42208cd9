#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <system_error>

#include "velamo/model/error.h"
#include "velamo/platform/system/terminal.h"
#include "velamo/platform/text/text.h"

namespace velamo {

/// What the program tells the one who called it.
enum class ExitStatus : std::uint8_t { success = 0, failure = 1, wrongUsage = 2 };

/// Where a command speaks: results to `out`, problems to `problems`.
struct Console {
    std::ostream& out;
    std::ostream& problems;
    bool outIsTerminal = false;
    bool problemsIsTerminal = false;
    /// What a picture on `out` is made of, and the room for it.
    TerminalPictures pictures = TerminalPictures::blocksOfAllColors;
    TerminalSize size{};
    /// The room on `problems`, asked for whenever something fills it: a person may change a window.
    std::function<TerminalSize()> roomForProblems = [] { return TerminalSize{}; };
    /// Why `out` failed, where the system's reason is known.
    const std::error_code* outFailure = nullptr;

    /// A name as it may be written to `out`: on a terminal it stays on its line. That nothing in it is obeyed there is
    /// seen to where the streams meet the terminal (see runCommandLine), whatever is written.
    [[nodiscard]] std::string shown(std::string_view text) const;
};

/// One line: "velamo: FILE: MESSAGE (error CODE)".
void reportProblem(const Console& console, const std::filesystem::path& file, const VLMError& error);
void reportProblem(const Console& console, std::string_view file, std::string_view message, int code);

/// One line, of something that is no failure: "velamo: FILE: MESSAGE".
void reportNote(const Console& console, std::string_view file, std::string_view message);

/// One line: "velamo: MESSAGE".
void reportWrongUsage(const Console& console, std::string_view message);

}  // namespace velamo
