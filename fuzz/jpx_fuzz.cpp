#include "velamo/formats/jpx.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readJpx, {data, size}, {.stitch = 2, .thread = 4});
    return 0;
}
