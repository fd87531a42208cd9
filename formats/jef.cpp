#include "formats/jef.h"

#include <array>

#include "formats/byte_reader.h"
#include "formats/format.h"
#include "formats/janome.h"
#include "platform/files.h"

namespace velamo {
namespace {

constexpr std::size_t smallestFile = 52;
constexpr std::uint32_t tablesOffset = 116;
constexpr std::uint32_t entrySize = 4;

enum Failure : int { noMetadata = 20, noColorCodes = 21, invalidOffset = 23, colorChangesDiffer = 24 };
constexpr std::array<ErrorText, 4> errorTexts{{
    {noMetadata, "Unable to import JEF file (no meta data)."},
    {noColorCodes, "Unable to import JEF file (no color codes)."},
    {invalidOffset, "Unable to import JEF file (invalid offset)."},
    {colorChangesDiffer, "Unable to import JEF file (color changes)."},
}};

struct Header {
    std::int32_t stitchOffset;
    std::int32_t version;
    std::int32_t colorCount;
    std::int32_t hoopCode;
};

Header headerOf(std::span<const std::uint8_t> file) {
    return {.stitchOffset = VLMByteReader(file).i32(),
            .version = VLMByteReader(file, 4).i8(),
            .colorCount = VLMByteReader(file, 24).i32(),
            .hoopCode = VLMByteReader(file, 32).i32()};
}

void setTypeAndVersion(VLMDesign& design, std::string_view extension, std::int32_t version) {
    const Format* format = formatWithExtension(extension);
    const std::string_view type = format == nullptr ? "" : format->type;
    const bool isJef = type == "JEF";
    const bool isJefPlus = type == "JEF+";
    design.setDesignType(isJef || isJefPlus ? std::string(type) : "?");
    design.setDesignVersion(isJef ? version : isJefPlus ? version * 10 : 0);
}

/// Some files change the colour more often than they name threads: the last thread then goes on, recoloured to a bluish
/// grey.
bool completeThreads(VLMDesign& design, std::size_t blocks, VLMError* error) {
    auto& threads = design.threads().all();
    if (!threads.empty() && threads.size() < blocks) {
        VLMThread added = threads.back();
        added.changeToColorinPalette(VLMColor::initWithRedgreenblue(0.5, double{0.6F}, double{0.6F}),
                                     design.designPalette());
        threads.resize(blocks, added);
    }
    return threads.size() == blocks || fail(errorTexts, colorChangesDiffer, error);
}

}  // namespace

bool readJef(VLMDesign& design, std::span<const std::uint8_t> file, std::string_view extension, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, noMetadata, error);
    const Header header = headerOf(file);
    setTypeAndVersion(design, extension, header.version);
    design.setHoopFromVendorwithCode("Janome", header.hoopCode);

    // The machines ask for the first of the two tables only; that both are there shows when they are read.
    if (!passesSizeTest(header.colorCount, entrySize, tablesOffset + entrySize, file.size()))
        return fail(errorTexts, noColorCodes, error);
    if (!isStitchOffset(header.stitchOffset, file.size())) return fail(errorTexts, invalidOffset, error);
    if (!readJanomeThreads(design, file, tablesOffset, header.colorCount)) return fail(errorTexts, noColorCodes, error);

    const auto stream = file.subspan(static_cast<std::size_t>(header.stitchOffset));
    const std::size_t colorChanges = readJanomeStitches(design, stream, JanomeDialect::jef);
    return completeThreads(design, colorChanges + 1, error);
}

bool importJefDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] { return readJef(design, readWholeFile(url), extensionOf(url), error); });
}

}  // namespace velamo
