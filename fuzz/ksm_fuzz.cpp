#include "velamo/formats/ksm.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    constexpr std::size_t headerSize = 512;
    constexpr fuzz::SmallestSizes sizes{.stitch = 3, .thread = 3};
    fuzz::check(readKsm, {data, size}, sizes);
    fuzz::check(readKsm, fuzz::behindPadding(headerSize, {data, size}), sizes);
    return 0;
}
