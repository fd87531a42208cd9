#pragma once

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

#include "bench/dst_file.h"
#include "tests/support/brother_files.h"
#include "tests/support/janome_files.h"
#include "tests/support/pcs_file.h"
#include "tests/support/vp3_file.h"

namespace velamo::bench {

using test::Bytes;

inline constexpr std::size_t stitchesOfJump = 50;
inline constexpr std::size_t stitchesOfColor = 10000;

/// What the next record of a generated design is.
enum class Kind { stitch, jump, colorChange };

/// Moves as designs have them: short ones in all directions, a jump now and then and a colour change every ten
/// thousand. The same every time. `add(kind, move)` appends a record; of `move` 32 bits are random.
template <class Add>
Bytes generated(std::size_t stitches, Add add) {
    Bytes records;
    records.reserve(stitches * 9);
    std::mt19937 random(1);
    for (std::size_t stitch = 1; stitch <= stitches; ++stitch) {
        const Kind kind = stitch % stitchesOfColor == 0  ? Kind::colorChange
                          : stitch % stitchesOfJump == 0 ? Kind::jump
                                                         : Kind::stitch;
        add(records, kind, static_cast<std::uint32_t>(random()));
    }
    return records;
}

inline void push(Bytes& records, std::initializer_list<std::uint32_t> bytes) {
    for (const std::uint32_t byte : bytes) records.push_back(static_cast<std::uint8_t>(byte));
}

/// Pairs of signed bytes that are no escapes, with escapes before jumps and colour changes.
inline Bytes escapedPairs(std::size_t stitches, std::uint32_t jumpMark, std::uint32_t changeMark) {
    return generated(stitches, [&](Bytes& records, Kind kind, std::uint32_t move) {
        if (kind == Kind::jump) push(records, {0x80, jumpMark});
        if (kind == Kind::colorChange) push(records, {0x80, changeMark});
        push(records, {(move & 0x3FU) - 0x20U, (move >> 8U & 0x3FU) - 0x20U});
    });
}

inline Bytes dstFile(std::size_t stitches) {
    return dstFileOfStitches(stitches);
}

inline Bytes expFile(std::size_t stitches) {
    return escapedPairs(stitches, 0x04, 0x01);
}

inline test::JanomeFile janomeFile(std::size_t stitches) {
    const std::vector<int> indices(stitches / stitchesOfColor + 1, 5);
    return {.indices = indices, .tensions = indices, .stream = escapedPairs(stitches, 0x02, 0x01)};
}
inline Bytes jefFile(std::size_t stitches) {
    return test::jefFile(janomeFile(stitches));
}
inline Bytes jpxFile(std::size_t stitches) {
    return test::jpxFile(janomeFile(stitches));
}
inline Bytes sewFile(std::size_t stitches) {
    return test::sewFile({5}, escapedPairs(stitches, 0x02, 0x01));
}

inline Bytes ksmFile(std::size_t stitches) {
    constexpr std::uint32_t jumpsEnd = 0x98;
    bool isJumping = true;
    const Bytes records = generated(stitches, [&isJumping](Bytes& to, Kind kind, std::uint32_t move) {
        const std::uint32_t plain = isJumping ? jumpsEnd : 0x80U | (move >> 16U & 0x60U);
        const std::uint32_t flags = kind == Kind::jump ? 0x87 : kind == Kind::colorChange ? 0x8B : plain;
        isJumping = kind != Kind::stitch;
        push(to, {move & 0x1FU, move >> 8U & 0x1FU, flags});
    });
    return test::bytes(test::repeated(512, 0), records, 0, 0, 0x88);
}

/// Nearly all moves are short ones, as the machine's own programs write them.
inline test::PecSection pecSection(std::size_t stitches) {
    return {.moves = generated(stitches, [](Bytes& to, Kind kind, std::uint32_t move) {
                if (kind == Kind::colorChange)
                    push(to, {0xFE, 0xB0, 1});
                else if (kind == Kind::jump)
                    push(to, {0x90, move & 0xFFU, 0x90, move >> 8U & 0xFFU});
                else
                    push(to, {move & 0x7FU, move >> 8U & 0x7FU});
            })};
}
inline Bytes pecFile(std::size_t stitches) {
    return test::pecFile(pecSection(stitches));
}
inline Bytes pesFile(std::size_t stitches) {
    return test::pesFile(pecSection(stitches));
}

inline Bytes vp3File(std::size_t stitches) {
    const std::size_t sections = std::max<std::size_t>(stitches / stitchesOfColor, 1);
    const Bytes moves = generated(stitches / sections, [](Bytes& to, Kind kind, std::uint32_t move) {
        if (kind == Kind::jump)
            push(to, {0x80, 0x01, 0, move & 0xFFU, 0, move >> 8U & 0xFFU, 0x80, 0x02});
        else
            push(to, {(move & 0x3FU) - 0x20U, (move >> 8U & 0x3FU) - 0x20U});
    });
    return test::vp3File({.sections = std::vector(sections, test::Vp3Section{.stitches = moves})});
}

/// The number of stitches has 16 bits in these files.
inline Bytes pcsFileOf(test::PcsType type, std::size_t stitches) {
    const std::size_t records = std::min<std::size_t>(stitches, 65535);
    const std::size_t changes = records / stitchesOfColor;
    const Bytes stream = generated(records, [](Bytes& to, Kind kind, std::uint32_t move) {
        const std::uint32_t mark = kind == Kind::jump ? 4 : kind == Kind::colorChange ? 3 : 0;
        push(to, {0, 60 + (move & 0x1FU), 1, 0, 0, 60 + (move >> 8U & 0x1FU), 1, 0, mark});
    });
    const Bytes head = test::pcsFile({.type = type, .records = {}, .stitchCount = records - changes, .end = {}});
    return test::bytes(head, stream, 0, 0);
}
inline Bytes pcsFile(std::size_t stitches) {
    return pcsFileOf(test::PcsType::pcsLargeHoop, stitches);
}
inline Bytes pcdFile(std::size_t stitches) {
    return pcsFileOf(test::PcsType::pcd, stitches);
}
inline Bytes pcqFile(std::size_t stitches) {
    return pcsFileOf(test::PcsType::pcq, stitches);
}

/// A file of so many stitches, or of as many as the format takes, for each format.
struct DesignFile {
    std::string_view extension;
    Bytes (*make)(std::size_t stitches);
};
inline constexpr auto designFiles = std::to_array<DesignFile>({
    {"dst", dstFile},
    {"exp", expFile},
    {"jef", jefFile},
    {"jef+", jefFile},
    {"jpx", jpxFile},
    {"sew", sewFile},
    {"pes", pesFile},
    {"pec", pecFile},
    {"vp3", vp3File},
    {"ksm", ksmFile},
    {"pcs", pcsFile},
    {"pcd", pcdFile},
    {"pcq", pcqFile},
});

}  // namespace velamo::bench
