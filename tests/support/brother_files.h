#pragma once

#include <string_view>

#include "tests/support/bytes.h"

namespace velamo::test {

/// Two blocks: a stitch, a colour change, a jump and a stitch back.
inline const Bytes pecMoves = bytes(5, 3, 0xFE, 0xB0, 2, 0x90, 10, 0x90, 20, 0x7F, 1);

struct PecSection {
    Bytes colors = bytes(5, 20);  // the thread index of each block
    int width = 40;
    int height = 30;
    int startX = 10;
    int startY = 5;
    Bytes moves = pecMoves;
    std::size_t surplusHeader = 0;  // bytes by which the graphic header is too long
    Bytes end = bytes(0xFF);
    Bytes thumbnails = repeated(8, 0);
};

/// The bytes of a section from behind its mark.
inline Bytes pecSegment(const PecSection& section = {}) {
    Bytes whole = bytes("rose            \r", repeated(12, ' '), 0xFF, 0, 6, 38, repeated(12, ' '),
                        static_cast<int>(section.colors.size()) - 1, section.colors);
    whole.resize(512 - 3, ' ');
    const Bytes stitches =
        bytes(repeated(section.surplusHeader, 0x20), 0x80 | (section.startX >> 8 & 0x0F), section.startX,
              0x80 | (section.startY >> 8 & 0x0F), section.startY, section.moves, section.end);
    constexpr std::int64_t fixedSize = 528 - 512;
    return bytes(whole, 0, 0, le24(fixedSize + static_cast<std::int64_t>(stitches.size())), 0x31, 0xFF, 0xF0,
                 le16(section.width), le16(section.height), 0xE0, 0x01, 0xB0, 0x01, stitches, section.thumbnails);
}

inline Bytes pecFileOf(const Bytes& segment) {
    return bytes("#PEC0001LA:", segment);
}
inline Bytes pecFile(const PecSection& section = {}) {
    return pecFileOf(pecSegment(section));
}

inline Bytes pesFileOf(std::string_view version, const Bytes& segment) {
    return bytes("#PES", version, le32(12 + 20), repeated(20, 0x11), "LA:", segment);
}
inline Bytes pesFile(const PecSection& section = {}) {
    return pesFileOf("0001", pecSegment(section));
}

}  // namespace velamo::test
