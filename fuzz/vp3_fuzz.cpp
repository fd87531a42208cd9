#include "velamo/formats/vp3.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readVp3, {data, size}, {.stitch = 2, .thread = 20}, velamo::fuzz::mostReadOfVp3(size));
    return 0;
}
