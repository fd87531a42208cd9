#include "velamo/formats/pes.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readPes, {data, size}, {.stitch = 2, .thread = 3});
    return 0;
}
