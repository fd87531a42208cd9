#include "velamo/formats/pec.h"

#include "fuzz/claims.h"

namespace velamo {

bool readSegment(VLMDesign& design, fuzz::Input segment, VLMError* error) {
    design.resetBounds();
    return importPecSegmentFromDataerror(design, segment, error);
}

}  // namespace velamo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::check(velamo::readSegment, {data, size}, {.stitch = 2, .thread = 3});
    return 0;
}
