#include "fuzz/claims.h"
#include "fuzz/import_input.h"
#include "fuzz/input_file.h"
#include "velamo/formats/import.h"

namespace velamo::fuzz {
namespace {

void checkImport(const std::filesystem::path& path, const ImportInput& input) {
    VLMDesign design;
    VLMError error;
    const bool isRead = importDesignFromURLerror(design, path, &error);
    const std::size_t size = input.file.size();
    claimProportion(design, input.format.extension == "vp3" ? mostReadOfVp3(size) : size, {.stitch = 2, .thread = 2});
    claim(isRead == (error.code == 0), "a failure has a code, a success has none");
    claim(!design.useThreadFile() || !input.sideFile.empty(),
          "threads come from the side file only where there is one");
    if (!isRead) return;
    claim(!design.stitches().empty() && !design.threads().empty(), "a design has stitches and threads");
    claim(design.displayRange() == StitchRange{0, design.stitches().size()}, "the whole design is shown");
    claimBounds(design);
    claim(!design.description().empty(), "a design can be described");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    const fuzz::ImportInput input = fuzz::importInputOf({data, size});
    fuzz::inputFile("design.threads", input.sideFile);
    fuzz::checkImport(fuzz::inputFile("design." + std::string(input.format.extension), input.file), input);
    return 0;
}
