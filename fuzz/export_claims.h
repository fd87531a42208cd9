#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/claims.h"
#include "velamo/editing/optimize.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"

namespace velamo::fuzz {

using File = std::optional<std::vector<std::uint8_t>>;

inline File writtenAs(const Format& format, VLMDesign& design, VLMError* error) {
    std::vector<std::uint8_t> bytes;
    const ExportOptions options{.dateText = "20260101000000"};
    return exportDesignToBytes(design, format.extension, bytes, error, options) ? File(std::move(bytes)) : std::nullopt;
}

/// A picture of the whole is made of designs of any size for PEC files, which is no matter of hostile bytes.
inline bool isDrawn(const VLMDesign& design) {
    constexpr std::int64_t mostPixels = 4000000;
    return std::int64_t{design.designWidth()} * design.designHeight() <= mostPixels;
}

/// Colour blocks: a design need not have a thread for each.
inline std::size_t blocksOf(const VLMDesign& design) {
    const auto isChange = [](const VLMStitch& stitch) { return stitch.isColorChange(); };
    const auto& stitches = design.stitches();
    return static_cast<std::size_t>(std::count_if(stitches.begin(), stitches.end(), isChange)) + 1;
}

/// What no reader takes, though the format has us write it.
inline bool isReadable(const VLMDesign& design, std::string_view type, Input file) {
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    const bool hasTwoSections = text.find("LA:") != text.rfind("LA:");  // by chance, in the name or a thumbnail
    if (design.stitches().empty()) return false;  // nothing but a jump, which had no place to go to
    if (type == "PES" && hasTwoSections) return false;
    if (type == "PCS" && design.numberOfStitches() < 1) return false;
    if (type == "JEF" && design.threads().size() > blocksOf(design)) return false;
    return true;
}

/// Whether the fitting that comes before each export would leave the stitches as they are. A piece of a cut stitch
/// behind a jump is a jump itself: it goes when it comes last, and joins the jump that follows.
inline bool isFittedForGood(const VLMDesign& design, std::string_view type) {
    VLMDesign fitted = design.copy();
    return optimizeJumpsFor(fitted, type) && fitted.stitches().all() == design.stitches().all();
}

inline bool isWhole(const VLMStitch& stitch) {
    return std::trunc(stitch.deltaX()) == stitch.deltaX() && std::trunc(stitch.deltaY()) == stitch.deltaY();
}

/// What a format's own rules keep from being written the same again; tests/formats/round_trip_test.cpp shows each.
inline bool isKeptByFormat(const VLMDesign& design, const VLMDesign& read, std::string_view type) {
    const auto& stitches = design.stitches();
    if (!isFittedForGood(design, type)) return false;
    if (!std::all_of(stitches.begin(), stitches.end(), isWhole)) return false;  // rounded, a cut is uneven
    if (design.threads().size() != blocksOf(design)) return false;              // only blocks come back
    // The change is followed by a stitch on the spot, or makes its move a jump.
    if ((type == "EXP" || type == "PCS") && blocksOf(design) > 1) return false;
    // Half of an odd size is no whole number: the start is that much off.
    if (type == "PES" || type == "PEC") return read.stitches()[0].isNullStitch();
    if (type != "PCS") return true;
    // A long move is a jump, a repeated place makes one of the stitch before, and one within the grid of places goes.
    return read.numberOfJumps() == design.numberOfJumps() && isFittedForGood(read, type);
}

/// What was read back is written as the same bytes again.
inline void checkSecondExport(VLMDesign& read, const Format& format, Input file) {
    claim(optimizeJumpsFor(read, format.type), "what a format held, it holds again");
    VLMError error;
    const File again = writtenAs(format, read, &error);
    claim(again.has_value(), "what was read back can be written");
    claim(std::equal(again->begin(), again->end(), file.begin(), file.end()), "the same design gives the same bytes");
}

inline void claimAllIsThere(const VLMDesign& design, const VLMDesign& read, std::string_view type) {
    claim(read.threads().size() == blocksOf(design), "every block is there again");
    claim(read.stitches().size() >= design.stitches().size(), "every stitch is there again");
    const int start = type == "PES" || type == "PEC" ? 1 : 0;
    claim(read.numberOfJumps() == design.numberOfJumps() + start, "jumps stay jumps");
}

inline void checkReading(const VLMDesign& design, const Format& format, Input file) {
    if (!isReadable(design, format.type, file)) return;
    VLMDesign read;
    VLMError error;
    const bool isRead = importDesignFromBytes(read, file, format, &error);
    claim(isRead && error.code == 0, "what was written can be read");
    claimBounds(read);
    read.setDesignName(design.designName());
    if (format.type != "PCS") claimAllIsThere(design, read, format.type);  // it misses the last of several colours
    if (isKeptByFormat(design, read, format.type)) checkSecondExport(read, format, file);
}

/// The design is refused or written, and what was written is read again with all that it had.
inline void checkExport(const VLMDesign& original, const Format& format) {
    VLMDesign design = original.copy();
    const bool isFitted = optimizeJumpsFor(design, format.type);
    if (format.type == "PEC" && !isDrawn(design)) return;
    VLMError error;
    const File file = writtenAs(format, design, &error);
    claim(file.has_value() == (error.code == 0), "a failure has a code, a success has none");
    if (!file) return claim(!error.message().empty(), "a failure says what is wrong");
    if (isFitted) checkReading(design, format, *file);
}

/// The same with each format that we write.
inline void checkExports(const VLMDesign& design) {
    for (const Format& format : allFormats())
        if (format.writer != nullptr) checkExport(design, format);
}

}  // namespace velamo::fuzz
