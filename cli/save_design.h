#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/side_file.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Something that a person should know about a file.
struct Note {
    std::filesystem::path file;
    std::string text;
};

/// What came of saving a design.
struct SaveOutcome {
    bool isSaved = false;
    std::filesystem::path file;  // that `error` is about, where it was not saved
    VLMError error;
    std::vector<Note> notes;
};

/// Exports the design to the target, which becomes its location, as exportDesignToURLerror does. Before the target is
/// replaced, the new file is read from memory: one that gives no design again is refused, and what it lost on the way
/// is noted. The side file beside the target, and no other, is kept in step: see SideFilePlan. Where that one cannot be
/// read this time, the target is not replaced; where the target is written but its side file cannot be, the design is
/// not saved either, and the side file is to blame. A target in an archive is refused.
[[nodiscard]] SaveOutcome saveDesign(VLMDesign& design, const std::filesystem::path& target, const DesignOrigin& origin,
                                     const ExportOptions& options, const ThreadSource& threadsBeside);

/// Prints the notes, and why the design was not saved.
void report(const SaveOutcome& outcome, const Console& console);

/// One line: "velamo: FILE: TEXT".
void report(const Note& note, const Console& console);

}  // namespace velamo
