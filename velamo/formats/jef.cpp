#include "velamo/formats/jef.h"

#include <array>
#include <cmath>

#include "velamo/formats/byte_reader.h"
#include "velamo/formats/byte_writer.h"
#include "velamo/formats/escaped_moves.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/format.h"
#include "velamo/formats/hoop_choice.h"
#include "velamo/formats/janome.h"
#include "velamo/formats/palette_change.h"
#include "velamo/formats/save_file.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/failure.h"
#include "velamo/model/thread_codes.h"
#include "velamo/platform/system/local_time.h"

namespace velamo {
namespace {

constexpr std::size_t smallestFile = 52;
constexpr std::uint32_t tablesOffset = 116;
constexpr std::uint32_t entrySize = 4;
constexpr const char* vendor = "Janome";  // and the name of its palette

enum Failure : int { noMetadata = 20, noColorCodes = 21, invalidOffset = 23, colorChangesDiffer = 24 };
constexpr std::array<ErrorText, 4> errorTexts{{
    {noMetadata, "Unable to import JEF file (no meta data)."},
    {noColorCodes, "Unable to import JEF file (no color codes)."},
    {invalidOffset, "Unable to import JEF file (invalid offset)."},
    {colorChangesDiffer, "Unable to import JEF file (color changes)."},
}};
// PCS files word these differently: a string table, whose keys are the numbers, cannot hold both texts, so they are in
// English everywhere.
constexpr std::array<ErrorText, 2> hoopErrorTexts{{
    {60, "Design exceeds the current hoop size."},
    {51, "Unable to export JEF file (unsupported hoop)."},
}};

struct Header {
    std::int32_t stitchOffset;
    std::int32_t version;
    std::int32_t colorCount;
    std::int32_t hoopCode;
};

Header headerOf(std::span<const std::uint8_t> file) {
    return {.stitchOffset = ByteReader(file).i32(),
            .version = ByteReader(file, 4).i8(),
            .colorCount = ByteReader(file, 24).i32(),
            .hoopCode = ByteReader(file, 32).i32()};
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

constexpr std::int64_t headerVersion = 10;
constexpr std::size_t dateSize = 14;
constexpr std::size_t lengthOffset = 28;
constexpr std::size_t unusedSize = 64;
constexpr std::int32_t usualIndex = 23;

void putHeader(ByteWriter& out, const VLMDesign& design, const ExportOptions& options) {
    const std::int64_t threads = design.numberOfThreads();
    std::string date = options.dateText.empty() ? localTimeText() : options.dateText;
    date.resize(dateSize, '0');
    out.u32(tablesOffset + 2 * std::int64_t{entrySize} * threads);
    out.u32(headerVersion);
    out.text(date);
    out.u16(0);
    out.u32(threads);
    out.u32(0);  // the length of the stitches, when it is known
    out.u32(design.hoopCode());
    for (const float edge : {design.xMin(), design.yMin(), design.xMax(), design.yMax()})
        out.u32(wholeNumber(double{std::abs(edge)}));
    out.fill(unusedSize, 0);
}

/// Appends the tables of thread indices and of tensions.
void putThreads(ByteWriter& out, VLMDesign& design) {
    takeToPalette(design, vendor, [&out](const VLMThread& written) {
        out.u32(janomeIndexOfCode(written.key().value_or("")).value_or(usualIndex));
    });
    for (const VLMThread& thread : design.threads()) out.u32(thread.tension());
}

void putStitches(ByteWriter& out, const VLMDesign& design) {
    const std::size_t start = out.size();
    writeEscapedMoves(out, design, 2);
    out.text("\x80\x10");
    out.replace(lengthOffset, static_cast<std::int64_t>((out.size() - start) / 2), entrySize);
}

}  // namespace

bool readJef(VLMDesign& design, std::span<const std::uint8_t> file, std::string_view extension, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, noMetadata, error);
    const Header header = headerOf(file);
    setTypeAndVersion(design, extension, header.version);
    design.setHoopFromVendorwithCode(vendor, header.hoopCode);

    // The machines ask for the first of the two tables only; that both are there shows when they are read.
    if (!passesSizeTest(header.colorCount, entrySize, tablesOffset + entrySize, file.size()))
        return fail(errorTexts, noColorCodes, error);
    if (!isStitchOffset(header.stitchOffset, file.size())) return fail(errorTexts, invalidOffset, error);
    if (!readJanomeThreads(design, file, tablesOffset, header.colorCount)) return fail(errorTexts, noColorCodes, error);

    const auto stream = file.subspan(static_cast<std::size_t>(header.stitchOffset));
    const std::size_t colorChanges = readJanomeStitches(design, stream, JanomeDialect::jef);
    return completeThreads(design, colorChanges + 1, error);
}

bool importJefDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] { return readJef(design, loadFile(url, options), extensionOf(url), error); });
}

std::optional<std::vector<std::uint8_t>> writeJef(VLMDesign& design, const ExportOptions& options, VLMError* error) {
    if (!chooseHoop(design, vendor, hoopErrorTexts, error)) return std::nullopt;
    // Two bytes a stitch, and two more of an escape for each change of the thread.
    const std::size_t threads = design.threads().size();
    ByteWriter out(tablesOffset + (2 * std::size_t{entrySize} + 2) * threads + 2 * (design.stitches().size() + 1));
    putHeader(out, design, options);
    putThreads(out, design);
    putStitches(out, design);
    return out.take();
}

bool exportJefDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error, [&] {
        const auto file = writeJef(design, options, error);
        if (!file || !saveFile(url, *file, options, error)) return false;
        design.setDesignType("JEF");
        design.setDesignVersion(10);
        return true;
    });
}

}  // namespace velamo
