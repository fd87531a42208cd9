#include "velamo/formats/sew.h"

#include <array>

#include "velamo/formats/byte_reader.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/janome.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr std::size_t stitchesOffset = 7544;
constexpr int mostColors = 12;
constexpr int firstIndexOfSecondGeneration = 13;
constexpr std::int32_t secondGeneration = 20;

enum Failure : int { tooShort = 90, invalidColorCount = 91 };
constexpr std::array<ErrorText, 2> errorTexts{{
    {tooShort, "Unable to read SEW: file size too small to hold any stitches."},
    {invalidColorCount, "Unable to read SEW: Number of colors invalid."},
}};

}  // namespace

bool readSew(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() <= stitchesOffset) return fail(errorTexts, tooShort, error);
    ByteReader header(file);
    const int colorCount = header.u16();
    if (colorCount == 0 || colorCount > mostColors) return fail(errorTexts, invalidColorCount, error);
    for (int i = 0; i < colorCount; ++i) {
        const int index = header.u16();
        if (index >= firstIndexOfSecondGeneration) design.setDesignVersion(secondGeneration);
        design.threads().push_back(janomeThread(index));
    }
    readJanomeStitches(design, file.subspan(stitchesOffset), JanomeDialect::sew);
    return true;
}

bool importSewDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("SEW");
        design.setDesignVersion(10);
        return readSew(design, loadFile(url, options), error);
    });
}

}  // namespace velamo
