#include "fuzz/export_claims.h"
#include "fuzz/import_input.h"
#include "fuzz/input_file.h"
#include "velamo/formats/import.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    const fuzz::ImportInput input = fuzz::importInputOf({data, size});
    const auto path = fuzz::inputFile("design." + std::string(input.format.extension), input.file);
    VLMDesign design;
    if (!importDesignFromURLerror(design, path, nullptr)) return 0;
    fuzz::checkExports(design);
    return 0;
}
