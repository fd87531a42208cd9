#include "cli/edit_script.h"

#include <cmath>
#include <sstream>

#include "fuzz/export_claims.h"
#include "reading/read_design.h"

namespace velamo::fuzz {
namespace {

constexpr std::size_t mostStitches = 20000;

/// Three blocks of stitches, a jump in each.
VLMDesign smallDesign() {
    VLMDesign design;
    design.setDesignType("DST");
    for (int block = 0; block < 3; ++block) {
        design.threads().push_back(VLMThread::initWithKeyofPalette(std::to_string(block), "Undefined"));
        design.stitches().push_back({5, 5, block > 0, block > 0});
        design.stitches().push_back({-40, 30, true, false});
        for (int i = 0; i < 4; ++i) design.stitches().push_back({i % 2 == 0 ? 20.0F : -12.5F, 10, false, false});
    }
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

std::string withoutQuotes(std::string text) {
    std::erase_if(text, [](char character) { return character == '"' || character == '\''; });
    return text;
}

/// The commands that touch nothing but the design: "append" reads any file, however its word is quoted.
std::vector<EditCommand> commandsOf(Input script) {
    std::vector<EditCommand> commands;
    std::istringstream lines{std::string(textOf(script))};
    for (std::string line; std::getline(lines, line);) {
        if (withoutQuotes(line).find("append") != line.npos) continue;
        try {
            commands.push_back(parseEditCommand(line));
        } catch (const EditSyntaxError& error) {
            claim(*error.what() != '\0', "a refusal says what was expected");
        }
    }
    return commands;
}

void claimValid(const VLMDesign& design) {
    const auto& stitches = design.stitches();
    const auto isFinite = [](const VLMStitch& stitch) {
        return std::isfinite(stitch.deltaX()) && std::isfinite(stitch.deltaY());
    };
    const auto isSelected = [](const VLMStitch& stitch) { return stitch.isSelected(); };
    claim(std::all_of(stitches.begin(), stitches.end(), isFinite), "every move is finite");
    // Without its first thread every block takes the next one's, and the last has none.
    claim(design.threads().size() <= blocksOf(design), "every thread has its block");
    // The other way round it need not be: an edit may take the last selected stitch away.
    claim(design.selectionActive() || std::none_of(stitches.begin(), stitches.end(), isSelected),
          "what is selected is known to be");
    const StitchRange shown = design.displayRange();
    claim(shown.length <= stitches.size() && shown.location <= stitches.size() - shown.length,
          "what is shown lies within the stitches");
    claim(!design.description().empty(), "the design can be described");
}

void checkScript(Input script) {
    VLMDesign design = smallDesign();
    const bool setsRange = withoutQuotes(std::string(textOf(script))).find("range") != std::string::npos;
    for (const EditCommand& command : commandsOf(script)) {
        try {
            const auto outcome = carryOut({&command, 1}, design, readDesign);
            claim(outcome.results.size() == 1, "every command has its result");
        } catch (const EditSyntaxError& error) {
            claim(*error.what() != '\0', "a refusal says what was expected");
        }
        if (setsRange) design.setDisplayRange({0, design.stitches().size()});  // it may be any
        claimValid(design);
        if (design.stitches().size() > mostStitches) return;
    }
    if (design.stitches().empty()) return;
    checkExports(design);
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkScript({data, size});
    return 0;
}
