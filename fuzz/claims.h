#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

#include "velamo/model/design.h"

namespace velamo::fuzz {

using Input = std::span<const std::uint8_t>;

inline std::string_view textOf(Input bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Stops the run, and so keeps the input, when something does not hold that should.
inline void claim(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// The bytes that a stitch and a thread take at least in the files of a format. One of each may come for nothing.
struct SmallestSizes {
    std::size_t stitch = 1;
    std::size_t thread = 1;
};

/// Nothing stands for more than the bytes that were read can hold.
inline void claimProportion(const VLMDesign& design, std::size_t bytesRead, SmallestSizes sizes) {
    claim(design.stitches().size() <= bytesRead / sizes.stitch + 1, "no more stitches than the bytes hold");
    claim(design.threads().size() <= bytesRead / sizes.thread + 1, "no more threads than the bytes hold");
}

/// How many bytes the VP3 reader reads at most of a file whose sections lead backward.
constexpr std::size_t mostReadOfVp3(std::size_t fileSize) noexcept {
    return fileSize * 8 + (1U << 20);
}

/// The bounds are those of every position but the origin.
inline void claimBounds(const VLMDesign& design) {
    VLMDesign counted;
    counted.resetBounds();
    float x = 0;
    float y = 0;
    for (const VLMStitch& stitch : design.stitches()) {
        x += stitch.deltaX();
        y += stitch.deltaY();
        counted.setXMin(std::min(counted.xMin(), x));
        counted.setYMin(std::min(counted.yMin(), y));
        counted.setXMax(std::max(counted.xMax(), x));
        counted.setYMax(std::max(counted.yMax(), y));
    }
    // The older files of this family always count the origin's x to the bounds.
    const bool countsOrigin = design.designType() == "PCD" || design.designType() == "PCQ";
    if (countsOrigin) counted.setXMin(std::min(counted.xMin(), 0.0F));
    claim(design.xMin() == counted.xMin() && design.xMax() == counted.xMax(), "bounds in x are those of the stitches");
    claim(design.yMin() == counted.yMin() && design.yMax() == counted.yMax(), "bounds in y are those of the stitches");
}

/// What a reader makes of any bytes: a design in proportion to those that it reads, whole and with its bounds, or an
/// error of ours.
template <class Reader>
void check(Reader read, Input file, SmallestSizes sizes, std::size_t bytesRead) {
    VLMDesign design;
    VLMError error;
    const bool isRead = read(design, file, &error);
    claimProportion(design, bytesRead, sizes);
    claim(isRead == (error.code == 0), "a failure has a code, a success has none");
    if (isRead) return claimBounds(design);
    claim(error.domain == designErrorDomain && !error.message().empty(), "a failure says what is wrong");
}

/// The same for a reader that reads nothing twice.
template <class Reader>
void check(Reader read, Input file, SmallestSizes sizes) {
    check(read, file, sizes, file.size());
}

/// The same file after `size` bytes that its reader passes over, so that no time is lost on changing those.
inline std::vector<std::uint8_t> behindPadding(std::size_t size, Input rest) {
    std::vector<std::uint8_t> file(size, ' ');
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

}  // namespace velamo::fuzz
