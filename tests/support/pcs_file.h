#pragma once

#include <optional>

#include "tests/support/bytes.h"

namespace velamo::test {

enum class PcsType { pcd = 0, pcq = 1, pcsSmallHoop = 2, pcsLargeHoop = 3 };
enum class PcsKind { stitch = 0, colorChange = 3, jump = 4 };

/// A place in sixths of a millimetre from the hoop's corner.
struct PcsRecord {
    int x = 0;
    int y = 0;
    PcsKind kind = PcsKind::stitch;
    int color = 0;
};

/// A colour record without a place of its own, two stitches, a jump, and a second colour.
inline const std::vector<PcsRecord> pcsRecords{
    {0, 0, PcsKind::colorChange, 0}, {240, 240}, {246, 243}, {270, 240, PcsKind::jump},
    {0, 0, PcsKind::colorChange, 1}, {276, 240}};

struct PcsFile {
    PcsType type = PcsType::pcsSmallHoop;
    Bytes palette = bytes(255, 0, 0, 0, 0, 51, 102, 0);  // red, green, blue, an unused byte
    std::vector<PcsRecord> records = pcsRecords;
    std::optional<std::size_t> stitchCount = std::nullopt;  // the records that are no colour records, unless another
    Bytes end = bytes(0, 0);
};

inline Bytes pcsRecord(const PcsRecord& record) {
    return bytes(record.color, le24(record.x), 0xEE, le24(record.y), static_cast<int>(record.kind));
}

inline Bytes pcsFile(const PcsFile& file = {}) {
    const bool isPcs = file.type == PcsType::pcsSmallHoop || file.type == PcsType::pcsLargeHoop;
    std::size_t stitches = 0;
    Bytes records;
    for (const PcsRecord& record : file.records) {
        stitches += isPcs && record.kind == PcsKind::colorChange ? 0 : 1;
        append(records, pcsRecord(record));
    }
    return bytes(0x32, static_cast<int>(file.type), le16(static_cast<std::int64_t>(file.palette.size() / 4)),
                 file.palette, le16(static_cast<std::int64_t>(file.stitchCount.value_or(stitches))), records, file.end);
}
inline Bytes pcdFile() {
    return pcsFile({.type = PcsType::pcd});
}
inline Bytes pcqFile() {
    return pcsFile({.type = PcsType::pcq});
}

}  // namespace velamo::test
