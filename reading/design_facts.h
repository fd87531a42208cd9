#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "velamo/formats/design_attributes.h"
#include "velamo/model/design.h"
#include "velamo/platform/text/optional_text.h"

namespace velamo {

/// A thread that sews, and how much. Lengths are in millimetres.
struct ThreadFacts {
    std::optional<std::uint32_t> color;  // 0xRRGGBB; nothing where the file does not tell
    Text name;
    Text palette;
    std::int64_t stitches = 0;
    double length = 0;
    friend bool operator==(const ThreadFacts&, const ThreadFacts&) = default;
};

/// The hoop that a file names.
struct HoopFacts {
    Text vendor;
    Text name;
    std::int32_t width = 0;  // millimetres
    std::int32_t height = 0;
    friend bool operator==(const HoopFacts&, const HoopFacts&) = default;
};

/// What is known of a design without its stitches.
struct DesignFacts {
    DesignAttributes attributes;  // as the desktop's indexer has them
    std::string format;           // upper case, such as "DST"
    std::int32_t version = 0;     // ten times the version of the format
    std::int64_t jumps = 0;
    std::int64_t trims = 0;
    std::int64_t blocks = 0;           // with stitches
    double length = 0;                 // of the sewn path, in millimetres
    std::vector<ThreadFacts> threads;  // of the blocks, the first of them (see mostBytesOfThreads)
    std::optional<HoopFacts> hoop;
    friend bool operator==(const DesignFacts&, const DesignFacts&) = default;
};

/// What the threads of a design may take where they are kept beside those of many others. People's designs take some
/// hundred bytes; only a file that was made for it has more.
inline constexpr std::size_t mostBytesOfThreads = 48'000;
/// A longer text is no name.
inline constexpr std::size_t longestThreadText = 200;

/// The color as 0xRRGGBB, each component rounded to a byte.
[[nodiscard]] std::uint32_t colorNumber(const VLMColor& color);

/// May throw std::bad_alloc.
[[nodiscard]] DesignFacts factsOfDesign(const VLMDesign& design);

}  // namespace velamo
