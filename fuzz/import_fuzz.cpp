#include <fstream>

#include "formats/import.h"
#include "formats/thread_file.h"
#include "fuzz/claims.h"
#include "fuzz/import_input.h"
#include "tests/support/temporary_folder.h"

namespace velamo::fuzz {
namespace {

std::string_view textOf(Input bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

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
    claim(design.displayRange() == VLMRange{0, design.stitches().size()}, "the whole design is shown");
    claimBounds(design);
    claim(!design.description().empty(), "a design can be described");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    static const test::TemporaryFolder folder;
    const fuzz::ImportInput input = fuzz::importInputOf({data, size});
    const auto path = folder.path() / ("design." + std::string(input.format.extension));
    // New files each time: one that is emptied and written again goes to the disk at once.
    std::filesystem::remove(path);
    std::filesystem::remove(threadFileOf(path));
    folder.write(path.filename(), fuzz::textOf(input.file));
    if (!input.sideFile.empty()) folder.write("design.threads", fuzz::textOf(input.sideFile));
    fuzz::checkImport(path, input);
    return 0;
}
