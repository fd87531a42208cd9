#include "velamo/formats/exp.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readExp, {data, size}, {.stitch = 2, .thread = 4});
    return 0;
}
