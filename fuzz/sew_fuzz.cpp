#include "velamo/formats/sew.h"

#include "fuzz/claims.h"

namespace {

constexpr std::size_t stitchesOffset = 7544;
constexpr std::size_t tableSize = 26;

/// The first bytes as the table of colours, the others as stitches.
std::vector<std::uint8_t> withGap(velamo::fuzz::Input input) {
    const auto table = input.first(std::min(input.size(), tableSize));
    auto file = velamo::fuzz::behindPadding(stitchesOffset, input.subspan(table.size()));
    std::copy(table.begin(), table.end(), file.begin());
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    constexpr fuzz::SmallestSizes sizes{.stitch = 2, .thread = 2};
    fuzz::check(readSew, {data, size}, sizes);
    fuzz::check(readSew, withGap({data, size}), sizes);
    return 0;
}
