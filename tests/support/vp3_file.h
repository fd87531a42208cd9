#pragma once

#include <optional>
#include <string_view>

#include "tests/support/bytes.h"

namespace velamo::test {

struct Vp3Section {
    int startX = 0;  // micrometres
    int startY = 0;
    int endX = 0;  // from the start
    int endY = 0;
    Bytes colorTable = bytes(0, 255, 51, 0, 0, 0);  // six bytes a colour
    Bytes catalogueNumber = bytes("1234");
    Bytes description = bytes("Red");
    Bytes maker = bytes("Maker");
    std::size_t skippedBlock = 0;
    Bytes stitches = bytes(10, 5, 0xFF, 1);
    std::int64_t surplusLength = 0;  // what the section claims beyond its bytes
};

struct Vp3File {
    std::vector<Vp3Section> sections = {{}};
    int hoopWidth = 100000;
    int hoopHeight = 100001;
    // Sizes of the blocks that stand between the fields.
    std::size_t headerBlock = 0;
    std::size_t blockBeforeHoop = 0;
    std::size_t blockBehindHoop = 0;
    std::size_t blockBeforeColors = 0;
    std::optional<int> colorCount = std::nullopt;  // the number of sections, unless another one is claimed
};

inline Bytes vp3Text(const Bytes& text) {
    return bytes(be16(static_cast<std::int64_t>(text.size())), text);
}

inline Bytes vp3Section(const Vp3Section& section) {
    const Bytes behindLength = bytes(
        be32(section.startX), be32(section.startY), static_cast<int>(section.colorTable.size() / 6), section.colorTable,
        repeated(3, 9), vp3Text(section.catalogueNumber), vp3Text(section.description), vp3Text(section.maker),
        be32(section.endX), be32(section.endY), be16(static_cast<std::int64_t>(section.skippedBlock)),
        repeated(section.skippedBlock + 7, 9), section.stitches);
    return bytes(0, 5, 0, be32(static_cast<std::int64_t>(behindLength.size()) + section.surplusLength), behindLength);
}

/// Everything before the first colour section.
inline Bytes vp3Header(const Vp3File& file) {
    const auto size = [](std::size_t block) { return be16(static_cast<std::int64_t>(block)); };
    return bytes("%vsm%", 0, size(file.headerBlock), repeated(file.headerBlock + 7, 9), size(file.blockBeforeHoop),
                 repeated(file.blockBeforeHoop + 59, 9), be32(file.hoopWidth), be32(file.hoopHeight),
                 size(file.blockBehindHoop), repeated(file.blockBehindHoop + 24, 9), size(file.blockBeforeColors),
                 repeated(file.blockBeforeColors, 9),
                 be16(file.colorCount.value_or(static_cast<int>(file.sections.size()))));
}

inline Bytes vp3File(const Vp3File& file = {}) {
    Bytes whole = vp3Header(file);
    for (const Vp3Section& section : file.sections) append(whole, vp3Section(section));
    return whole;
}

}  // namespace velamo::test
