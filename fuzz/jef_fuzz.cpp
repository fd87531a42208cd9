#include "velamo/formats/jef.h"

#include "fuzz/claims.h"

namespace velamo {

/// The two variants of the format differ in the version only, whose sign is as good a coin as any.
bool readVariant(VLMDesign& design, fuzz::Input file, VLMError* error) {
    return readJef(design, file, file.size() > 4 && file[4] < 0x80 ? "jef" : "jef+", error);
}

}  // namespace velamo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readVariant, {data, size}, {.stitch = 2, .thread = 4});
    return 0;
}
