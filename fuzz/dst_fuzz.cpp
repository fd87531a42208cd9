#include "velamo/formats/dst.h"

#include "fuzz/claims.h"

namespace {

constexpr std::size_t headerSize = 512;

/// The records alone, behind a header that is as it should be.
std::vector<std::uint8_t> withHeader(velamo::fuzz::Input records) {
    constexpr std::string_view tags = "LA:ST:CO:+X:-X:+Y:-Y:AX:AY:";
    auto file = velamo::fuzz::behindPadding(headerSize, records);
    std::copy(tags.begin(), tags.end(), file.begin());
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    constexpr fuzz::SmallestSizes sizes{.stitch = 3, .thread = 3};
    fuzz::check(readDst, {data, size}, sizes);
    fuzz::check(readDst, withHeader({data, size}), sizes);
    return 0;
}
