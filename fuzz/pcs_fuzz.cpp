#include "velamo/formats/pcs.h"

#include "fuzz/claims.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readPcx, {data, size}, {.stitch = 9, .thread = 9});
    return 0;
}
