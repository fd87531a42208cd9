#include "velamo/formats/pes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <string_view>

#include "velamo/formats/byte_writer.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/pec.h"
#include "velamo/formats/pec_thumbnail.h"
#include "velamo/formats/save_file.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr std::size_t versionOffset = 4;
constexpr std::size_t versionSize = 4;
constexpr std::size_t pesHeaderSize = 8;
constexpr std::size_t pecHeaderSize = 11;  // with the section's mark
constexpr std::string_view sectionMark = "LA:";

constexpr std::array<int, 13> pesVersions{1, 20, 25, 30, 40, 50, 55, 56, 60, 70, 71, 80, 90};
constexpr std::array<int, 1> pecVersions{1};

enum Failure : int {
    noHeader = 30,
    unsupportedVersion = 31,
    noSection = 32,
    severalSections = 33,
    tooLarge = 200,
    notCentered = 201,
    tooManyColors = 202,
    tooManyStitches = 203
};
// 30 and 31 have one number and two texts: a string table, whose keys are the numbers, cannot hold them, so they are in
// English everywhere.
constexpr std::array<ErrorText, 4> pesErrorTexts{{
    {noHeader, "Unable to import PES file (missing header)."},
    {unsupportedVersion, "Unable to import PES file (unsupported version)."},
    {noSection, "Unable to import PES file (PEC part missing)."},
    {severalSections, "Unable to import PES file (PEC multiparts not supported by PES file version)."},
}};
constexpr std::array<ErrorText, 4> pesWritingErrorTexts{{
    {tooLarge, "The design is larger than supported by PES v1.0."},
    {notCentered, "The design needs to be centered."},
    {tooManyColors, "Too many colors"},
    {tooManyStitches, "Too many stitches"},
}};
constexpr std::array<ErrorText, 3> pecErrorTexts{{
    {noHeader, "Unable to import PES/PEC file (missing header)."},
    {unsupportedVersion, "Unable to import PES/PEC file (unsupported version)."},
    {noSection, "Unable to import PES file (PEC part missing)."},
}};

std::string_view textOf(std::span<const std::uint8_t> file) noexcept {
    return {reinterpret_cast<const char*>(file.data()), file.size()};
}

/// The whole number that the text starts with: spaces, a sign, digits. 0 when it starts with none.
int leadingNumber(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const bool isNegative = text.substr(0, 1) == "-";
    if (isNegative || text.substr(0, 1) == "+") text.remove_prefix(1);
    int number = 0;
    for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1))
        number = number * 10 + (text[0] - '0');
    return isNegative ? -number : number;
}

/// Keeps the version in the design, refused or not; version 1 has always been kept in tenths.
bool takeVersion(VLMDesign& design, std::string_view file, std::span<const int> accepted) {
    const int version = leadingNumber(file.substr(versionOffset, versionSize));
    const bool isAccepted = std::find(accepted.begin(), accepted.end(), version) != accepted.end();
    design.setDesignVersion(isAccepted && version == 1 ? 10 : version);
    return isAccepted;
}

bool readSection(VLMDesign& design, std::span<const std::uint8_t> segment, VLMError* error) {
    design.resetBounds();
    return importPecSegmentFromDataerror(design, segment, error);
}

// The field of version 1, in tenths of a millimetre.
constexpr std::int32_t fieldWidth = 1300;
constexpr std::int32_t fieldHeight = 1800;
constexpr std::int32_t mostThreads = 64;
constexpr std::size_t mostStitches = 30000;

bool checkLimits(const VLMDesign& design, VLMError* error) {
    constexpr float right = fieldWidth / 2.0F;
    constexpr float top = fieldHeight / 2.0F;
    if (design.designWidth() > fieldWidth || design.designHeight() > fieldHeight)
        return fail(pesWritingErrorTexts, tooLarge, error);
    if (design.xMin() < -right || design.xMax() > right || design.yMin() < -top || design.yMax() > top)
        return fail(pesWritingErrorTexts, notCentered, error);
    if (design.numberOfThreads() > mostThreads) return fail(pesWritingErrorTexts, tooManyColors, error);
    return design.stitches().size() <= mostStitches || fail(pesWritingErrorTexts, tooManyStitches, error);
}

constexpr std::size_t sectionPointerOffset = 8;
constexpr std::int64_t middle = 1000;  // of the plane that machines lay the design on

void putObjectName(ByteWriter& out, std::string_view name) {
    out.u16(static_cast<std::int64_t>(name.size()));
    out.text(name);
}

/// The header and the object of the embroidery as a whole.
void putEmbroidery(ByteWriter& out, const VLMDesign& design) {
    out.text("#PES0001");
    out.u32(0);  // where the PEC section begins, when it is known
    for (const std::int64_t number : {0, 1, 1, 0xFFFF, 0}) out.u16(number);
    putObjectName(out, "CEmbOne");
    const double xMin = design.xMin();
    const double yMin = design.yMin();
    for (int time = 0; time < 2; ++time)
        for (const double place : {xMin + middle, yMin + middle, middle - xMin, middle - yMin})
            out.u16(wholeNumber(place));
    for (const float number : {1.0F, 0.0F, 0.0F, 1.0F, float{middle}, float{middle}})
        out.u32(std::bit_cast<std::uint32_t>(number));
    out.u16(1);
    out.u16(wholeNumber(xMin));
    out.u16(wholeNumber(-yMin));
    out.u16(design.designWidth());
    out.u16(design.designHeight());
    constexpr std::size_t unusedSize = 10;
    out.fill(unusedSize, 0);
    out.u16(0xFFFF);
    out.u16(0);
}

enum class BlockKind { sewn = 0, jump = 1 };

/// Writes blocks of points one after the other.
class BlockWriter {
public:
    BlockWriter(ByteWriter& out, std::span<const std::uint8_t> colors) noexcept : out_(out), colors_(colors) {}

    /// Ends the open block, if there is one. A design may change its colour more often than it has threads.
    void open(BlockKind kind, std::size_t thread) {
        if (countOffset_ != 0) out_.u16(0x0803);
        out_.u16(static_cast<std::int64_t>(kind));
        out_.u16(thread < colors_.size() ? colors_[thread] : usualBrotherIndex);
        countOffset_ = out_.size();
        count_ = 0;
        out_.u16(0);
    }
    void point(DesignPoint place) {
        out_.u16(rounded(place.x));
        out_.u16(rounded(-place.y));
        out_.replace(countOffset_, ++count_, 2);
    }

private:
    static std::int64_t rounded(double place) noexcept {
        return wholeNumber(double{std::round(static_cast<float>(place))});
    }

    ByteWriter& out_;
    std::span<const std::uint8_t> colors_;
    std::size_t countOffset_ = 0;
    std::int64_t count_ = 0;
};

/// The stitches from the first that is sewn on. A jump begins a new block; a colour change has a block for its own way
/// before.
void putBlocks(ByteWriter& out, const VLMDesign& design, std::span<const std::uint8_t> colors) {
    const auto& stitches = design.stitches().all();
    const auto isSewn = [](const VLMStitch& stitch) { return !stitch.isJumpStitch(); };
    DesignPoint place = design.firstStitch();
    std::size_t thread = 0;
    BlockWriter blocks(out, colors);
    blocks.open(BlockKind::sewn, thread);
    for (auto stitch = std::find_if(stitches.begin(), stitches.end(), isSewn); stitch != stitches.end(); ++stitch) {
        const DesignPoint former = place;
        place.x += double{stitch->deltaX()};
        place.y += double{stitch->deltaY()};
        if (stitch->isColorChange()) {
            blocks.open(BlockKind::jump, ++thread);
            blocks.point(former);
            blocks.point(place);
        }
        if (stitch->isColorChange() || stitch->isJumpStitch()) {
            blocks.open(BlockKind::sewn, thread);
            blocks.point(place);
        }
        blocks.point(place);
    }
}

void putColorTable(ByteWriter& out, std::span<const std::uint8_t> colors) {
    out.u8(static_cast<std::int64_t>(colors.size()));
    out.u24(0);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        out.u16(colors[i]);
        out.u16(static_cast<std::uint8_t>(i + 1 < colors.size() ? 3 * (i + 1) : 0));
    }
    out.u16(0);
}

/// Whether there can be a PEC section of the design and a thumbnail behind it: looked at before anything is drawn.
bool checkSection(const VLMDesign& design, const PecThumbnails& thumbnails, VLMError* error) {
    const bool isWithin = design.threads().size() <= mostPecThreads && thumbnails.canBeMade(design) &&
                          sizeOfPecSegment(design) <= largestPecSection;
    return isWithin || failWithSystemError(EFBIG, error);
}

/// Appends a PEC section and its thumbnails.
bool putSection(ByteWriter& out, std::span<const std::uint8_t> section, std::span<const std::uint8_t> thumbnails,
                VLMError* error) {
    if (thumbnails.empty()) return failWithSystemError(ENOMEM, error);
    out.bytes(section);
    out.bytes(thumbnails);
    return true;
}

bool saveAs(VLMDesign& design, const std::filesystem::path& url, const std::optional<std::vector<std::uint8_t>>& file,
            const char* type, const ExportOptions& options, VLMError* error) {
    if (!file || !saveFile(url, *file, options, error)) return false;
    design.setDesignType(type);
    design.setDesignVersion(10);
    design.setDesignHoop(nullptr);
    return true;
}

}  // namespace

bool readPes(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    const std::string_view text = textOf(file);
    if (text.size() < pesHeaderSize || text.substr(0, versionOffset) != "#PES")
        return fail(pesErrorTexts, noHeader, error);
    if (!takeVersion(design, text, pesVersions)) return fail(pesErrorTexts, unsupportedVersion, error);
    const std::size_t mark = text.find(sectionMark);
    if (mark == text.npos) return fail(pesErrorTexts, noSection, error);
    const std::size_t section = mark + sectionMark.size();
    if (text.find(sectionMark, section) != text.npos)
        return fail(pesErrorTexts, severalSections, error, ErrorTextKey::failureReason);
    return readSection(design, file.subspan(section), error);
}

bool readPec(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    const std::string_view text = textOf(file);
    if (text.size() < pecHeaderSize || text.substr(0, versionOffset) != "#PEC")
        return fail(pecErrorTexts, noHeader, error);
    if (!takeVersion(design, text, pecVersions)) return fail(pecErrorTexts, unsupportedVersion, error);
    if (text.substr(pesHeaderSize, sectionMark.size()) != sectionMark) return fail(pecErrorTexts, noSection, error);
    return readSection(design, file.subspan(pecHeaderSize), error);
}

bool importPesDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("PES");
        return readPes(design, loadFile(url, options), error);
    });
}

bool importPecDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("PEC");
        return readPec(design, loadFile(url, options), error);
    });
}

std::optional<std::vector<std::uint8_t>> writePes(VLMDesign& design, VLMError* error, const ExportOptions& options) {
    const PecThumbnails& thumbnails = *options.thumbnails;
    if (!checkLimits(design, error) || !checkSection(design, thumbnails, error)) return std::nullopt;
    const auto colors = takeBrotherIndices(design);
    constexpr std::size_t pointSize = 4;
    constexpr std::size_t sizeBesides = 1024;
    ByteWriter out(sizeBesides + 2 * pointSize * design.stitches().size() + pecThumbnailSize * (colors.size() + 1));
    putEmbroidery(out, design);
    putObjectName(out, "CSewSeg");
    putBlocks(out, design, colors);
    putColorTable(out, colors);
    // Three bytes reach far enough: a file of the most stitches and threads that there may be has a megabyte.
    out.replace(sectionPointerOffset, static_cast<std::int64_t>(out.size()), 3);
    const auto section = exportPecSegmentToData(design);
    if (!putSection(out, section, thumbnails.ofDesignAndThreads(design), error)) return std::nullopt;
    return out.take();
}

std::optional<std::vector<std::uint8_t>> writePec(VLMDesign& design, VLMError* error, const ExportOptions& options) {
    if (!checkSection(design, *options.thumbnails, error)) return std::nullopt;
    const auto section = exportPecSegmentToData(design);
    ByteWriter out(pesHeaderSize + section.size() + pecThumbnailSize);
    out.text("#PEC0001");
    if (!putSection(out, section, options.thumbnails->ofThread(design, -1), error)) return std::nullopt;
    return out.take();
}

bool exportPesDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error,
                     [&] { return saveAs(design, url, writePes(design, error, options), "PES", options, error); });
}

bool exportPecDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error,
                     [&] { return saveAs(design, url, writePec(design, error, options), "PEC", options, error); });
}

}  // namespace velamo
