#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"

namespace velamo::test {

using Json = nlohmann::ordered_json;

/// What one call of the program did.
struct Outcome {
    int status = 0;
    std::string out;
    std::string problems;
    [[nodiscard]] Json json() const { return Json::parse(out); }
};

inline Outcome call(const std::vector<std::string>& arguments, bool isTerminal = false) {
    std::ostringstream out;
    std::ostringstream problems;
    const Console console{
        .out = out, .problems = problems, .outIsTerminal = isTerminal, .problemsIsTerminal = isTerminal};
    const int status = runCommandLine(arguments, console);
    return {status, out.str(), problems.str()};
}

/// A stitch of (1, 1), a jump of (10, 0), a colour change on the spot and a stitch of (-1, 81).
inline const Bytes smallDst = dstFile(bytes(0x81, 0x00, 0x03, 0x05, 0x00, 0x83, 0x00, 0x00, 0xC3, 0x02, 0x00, 0x23));

/// A design of two blocks with its middle at the origin.
inline const Bytes twoColorDst =
    dstFile(bytes(0xA5, 0xA5, 0x27, 0x00, 0x00, 0xC3, 0x5A, 0x5A, 0x1B, 0x5A, 0x5A, 0x1B, 0xA5, 0xA5, 0x27));

/// Places from (-121, -121) to (121, 121): 24.2 mm wide and high, its middle at the origin.
inline const Bytes diagonalDst = dstFile(bytes(0xA5, 0xA5, 0x27, 0x5A, 0x5A, 0x1B, 0x5A, 0x5A, 0x1B, 0xA5, 0xA5, 0x27));

}  // namespace velamo::test
