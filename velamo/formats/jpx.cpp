#include "velamo/formats/jpx.h"

#include <array>

#include "velamo/formats/byte_reader.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/janome.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr std::size_t smallestFile = 120;
constexpr std::uint32_t tablesOffset = 60;
constexpr std::uint32_t entrySize = 4;

enum Failure : int { noMetadata = 210, noColorCodes = 211, invalidOffset = 212 };
constexpr std::array<ErrorText, 3> errorTexts{{
    {noMetadata, "Unable to import JPX file (no meta data)."},
    {noColorCodes, "Unable to import JPX file (no color codes)."},
    {invalidOffset, "Unable to import JPX file (invalid offset)."},
}};

}  // namespace

bool readJpx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, noMetadata, error);
    const std::int32_t colorCount = ByteReader(file, 32).i32();
    design.setDesignVersion(ByteReader(file, 4).i8());
    design.setHoopFromVendorwithCode("Janome", ByteReader(file, 40).i32());

    if (!passesSizeTest(colorCount, 2 * entrySize, tablesOffset, file.size()))
        return fail(errorTexts, noColorCodes, error);
    const std::int32_t stitchOffset = ByteReader(file).i32();
    if (!isStitchOffset(stitchOffset, file.size())) return fail(errorTexts, invalidOffset, error);
    if (!readJanomeThreads(design, file, tablesOffset, colorCount)) return fail(errorTexts, noColorCodes, error);

    readJanomeStitches(design, file.subspan(static_cast<std::size_t>(stitchOffset)), JanomeDialect::jef);
    return true;
}

bool importJpxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("JPX");
        return readJpx(design, loadFile(url, options), error);
    });
}

}  // namespace velamo
