#include "formats/jpx.h"

#include <algorithm>
#include <array>

#include "formats/byte_reader.h"
#include "formats/janome.h"
#include "platform/files.h"

namespace velamo {
namespace {

constexpr std::size_t smallestFile = 120;
constexpr std::int64_t tablesOffset = 60;
constexpr std::int64_t entrySize = 4;

enum Failure : int { noMetadata = 210, noColorCodes = 211, invalidOffset = 212 };
constexpr std::array<ErrorText, 3> errorTexts{{
    {noMetadata, "Unable to import JPX file (no meta data)."},
    {noColorCodes, "Unable to import JPX file (no color codes)."},
    {invalidOffset, "Unable to import JPX file (invalid offset)."},
}};

/// Whether both thread tables are there: by the machine's own bound in the 32-bit arithmetic of its software, and
/// truly.
bool holdsTables(std::int32_t colorCount, std::int64_t fileSize) {
    const auto bound = static_cast<std::int32_t>(static_cast<std::uint32_t>(colorCount) * 8U + 60U);
    return fileSize >= bound && fileSize >= tablesOffset + 2 * entrySize * std::max(colorCount, 0);
}

}  // namespace

bool readJpx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, noMetadata, error);
    const std::int32_t colorCount = VLMByteReader(file, 32).i32();
    design.setDesignVersion(VLMByteReader(file, 4).i8());
    design.setHoopFromVendorwithCode("Janome", VLMByteReader(file, 40).i32());

    const auto size = static_cast<std::int64_t>(file.size());
    if (!holdsTables(colorCount, size)) return fail(errorTexts, noColorCodes, error);
    const std::int64_t stitchOffset = VLMByteReader(file).i32();
    if (stitchOffset < 0 || size < stitchOffset + 4) return fail(errorTexts, invalidOffset, error);

    if (colorCount > 0) readJanomeThreads(design, file.subspan(tablesOffset), static_cast<std::size_t>(colorCount));
    readJanomeStitches(design, file.subspan(static_cast<std::size_t>(stitchOffset)), JanomeDialect::jef);
    return true;
}

bool importJpxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        design.setDesignType("JPX");
        return readJpx(design, readWholeFile(url), error);
    });
}

}  // namespace velamo
