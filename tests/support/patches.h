#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "tests/support/designs.h"
#include "tests/support/samples.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/platform/system/files.h"

namespace velamo::test {

struct PatchPlace {
    int x = 0;
    int y = 0;
};

/// Where the needle goes in: to and fro, from the lower to the upper corner of a diamond of 8 by 8 mm, all of which is
/// covered.
inline std::vector<PatchPlace> patchPlaces() {
    constexpr int rows = 20;
    constexpr int rowHeight = 4;
    constexpr int middle = rows * rowHeight / 2;
    std::vector<PatchPlace> places;
    for (int row = 0; row <= rows; ++row) {
        const int half = rowHeight * std::min(row, rows - row);
        const int side = row % 2 == 0 ? half : -half;
        places.push_back({middle - side, row * rowHeight});
        places.push_back({middle + side, row * rowHeight});
    }
    return places;
}

/// The moves between the places; the first one goes nowhere.
inline std::vector<PatchPlace> patchMoves() {
    std::vector<PatchPlace> moves;
    const auto places = patchPlaces();
    PatchPlace last = places.front();
    for (const PatchPlace& place : places) {
        moves.push_back({place.x - last.x, place.y - last.y});
        last = place;
    }
    return moves;
}

inline Bytes patchInBytes() {
    Bytes stream;
    for (const PatchPlace& move : patchMoves()) append(stream, bytes(move.x & 0xFF, move.y & 0xFF));
    return stream;
}

inline Bytes patchInKsm() {
    Bytes records = bytes(0, 0, 0x98);
    for (const PatchPlace& move : patchMoves()) {
        const int signs = (move.x < 0 ? 0x40 : 0) | (move.y < 0 ? 0x20 : 0);
        append(records, bytes(std::abs(move.y), std::abs(move.x), 0x80 | signs));
    }
    return ksmFile(bytes(records, 0, 0, 0x88));
}

inline std::vector<PcsRecord> patchInPcs() {
    std::vector<PcsRecord> records{{0, 0, PcsKind::colorChange, 0}};
    for (const PatchPlace& place : patchPlaces()) records.push_back({place.x * 6 / 10, place.y * 6 / 10});
    return records;
}

/// The patch in a format that we do not write.
inline Bytes patchFile(std::string_view extension) {
    const Bytes janome = bytes(patchInBytes(), janomeEnd);
    if (extension == "jef+") return jefFile({.indices = {5}, .tensions = {7}, .stream = janome});
    if (extension == "jpx") return jpxFile({.indices = {5}, .tensions = {7}, .stream = janome});
    if (extension == "sew") return sewFile({5}, janome);
    if (extension == "ksm") return patchInKsm();
    if (extension == "vp3") return vp3File({.sections = {{.stitches = patchInBytes()}}});
    if (extension == "pcd") return pcsFile({.type = PcsType::pcd, .records = patchInPcs()});
    if (extension == "pcq") return pcsFile({.type = PcsType::pcq, .records = patchInPcs()});
    throw std::invalid_argument("no patch of format " + std::string(extension));
}

/// Writes the patch, as large as a thumb's nail, to a file of the format that its extension tells.
inline bool writePatch(const std::filesystem::path& file) {
    const std::string extension = extensionOf(file);
    const Format* const format = formatWithExtension(extension);
    if (format == nullptr) return false;
    if (format->writer == nullptr) return !replaceFile(file, patchFile(extension));
    std::vector<VLMStitch> stitches;
    for (const PatchPlace& move : patchMoves())
        stitches.push_back(stitch(static_cast<float>(move.x), static_cast<float>(move.y)));
    VLMDesign design = sewn(std::move(stitches));
    return exportDesignToURLerror(design, file, nullptr);
}

}  // namespace velamo::test
