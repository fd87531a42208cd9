#pragma once

#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace velamo::bench {

/// A DST file of so many stitches as designs have them: moves in all directions, a jump now and then and a colour
/// change every ten thousand. The same bytes every time.
inline std::vector<std::uint8_t> dstFileOfStitches(std::size_t stitches) {
    constexpr std::string_view tags = "LA:\rST:\rCO:\r+X:\r-X:\r+Y:\r-Y:\rAX:\rAY:\r";
    constexpr std::size_t headerSize = 512;
    constexpr std::size_t recordSize = 3;
    constexpr std::size_t stitchesOfJump = 50;
    constexpr std::size_t stitchesOfColor = 10000;
    std::vector<std::uint8_t> file(tags.begin(), tags.end());
    file.reserve(headerSize + recordSize * (stitches + 1));
    file.resize(headerSize, ' ');
    std::mt19937 random(1);
    for (std::size_t stitch = 1; stitch <= stitches; ++stitch) {
        const auto move = static_cast<std::uint32_t>(random());
        const unsigned kind = stitch % stitchesOfColor == 0 ? 0xC3U : stitch % stitchesOfJump == 0 ? 0x83U : 0x03U;
        file.push_back(static_cast<std::uint8_t>(move));
        file.push_back(static_cast<std::uint8_t>(move >> 8U));
        file.push_back(static_cast<std::uint8_t>(kind));
    }
    file.insert(file.end(), {0x00, 0x00, 0xF3});
    return file;
}

}  // namespace velamo::bench
