#include "fuzz/claims.h"
#include "fuzz/input_file.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"

namespace velamo::fuzz {
namespace {

/// A design with as many threads as the side file seems to have.
VLMDesign designFor(Input sideFile) {
    const auto list = parsePropertyList(sideFile);
    const auto* entries = list ? list->as<PropertyList::Array>() : nullptr;
    VLMDesign design;
    design.threads().all().resize(entries != nullptr ? entries->size() : 1);
    return design;
}

void checkSideFile(Input sideFile) {
    const auto file = inputFile("design.threads", sideFile);
    VLMDesign design = designFor(sideFile);
    const VLMDesign before = design.copy();
    if (!importThreadsForDesign(design, file))
        return claim(design.threads() == before.threads(), "what is refused changes no thread");
    claim(design.threads().size() == before.threads().size(), "every thread is replaced by one");
    exportThreadsForDesign(design, file);
    const auto written = readWholeFile(file);
    claim(importThreadsForDesign(design, file), "what was written can be read");
    exportThreadsForDesign(design, file);
    claim(readWholeFile(file) == written, "writing and reading changes nothing");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkSideFile({data, size});
    return 0;
}
