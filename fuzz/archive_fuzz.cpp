#include "fuzz/claims.h"

namespace velamo::fuzz {
namespace {

void checkArchive(Input archive) {
    VLMDesign design;
    VLMError error;
    const bool isRead = unarchiveDesign(design, archive, &error);
    claim(isRead == (error.code == 0), "a failure has a code, a success has none");
    claimProportion(design, archive.size(), {});
    if (!isRead) return claim(!error.failureReason.empty(), "a failure says what is wrong");
    const auto encoded = archiveDesign(design);
    VLMDesign decoded;
    claim(unarchiveDesign(decoded, encoded, nullptr), "what was decoded can be encoded and decoded again");
    claim(archiveDesign(decoded) == encoded, "decoding loses nothing that is encoded");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkArchive({data, size});
    return 0;
}
