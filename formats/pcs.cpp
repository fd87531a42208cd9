#include "formats/pcs.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "formats/byte_reader.h"
#include "formats/stitch_sink.h"
#include "formats/undefined_threads.h"
#include "platform/files.h"
#include "platform/resources.h"

namespace velamo {
namespace {

constexpr std::uint8_t mark = 0x32;
constexpr std::size_t headSize = 6;  // without the palette
constexpr std::size_t colorSize = 4;
constexpr std::size_t recordSize = 9;
constexpr int mostColors = 16;
constexpr std::int32_t usualVersion = 20;
constexpr std::int32_t versionWithPlacedChanges = 21;
constexpr float longestStitch = 120;  // a longer one is a jump, whatever its record says
constexpr float farthestX = 1200;
constexpr float farthestY = 1150;

enum Failure : int {
    tooShort = 160,
    noMark = 161,
    invalidType = 162,
    tooManyColors = 163,
    invalidColor = 164,
    invalidPlace = 165
};
constexpr std::array<ErrorText, 6> errorTexts{{
    {tooShort, "Unable to read PCx (file too small)"},
    {noMark, "Unable to read PCx (missing magic)"},
    {invalidType, "Unable to read PCx (invalid type)"},
    {tooManyColors, "Unable to read PCx (color palette > 16)"},
    {invalidColor, "Unable to read PCS (invalid color index)"},
    {invalidPlace, "Unable to read PCx (invalid stitch position)"},
}};

constexpr std::array<const char*, 4> types{"PCD", "PCQ", "PCS", "PCS"};

struct Record {
    int colorIndex = 0;
    std::uint32_t rawX = 0;
    std::uint32_t rawY = 0;
    int kind = 0;
};
constexpr int colorChangeKind = 3;
constexpr int jumpKind = 4;

Record recordOf(std::span<const std::uint8_t> bytes) noexcept {
    VLMByteReader in(bytes);
    Record record;
    record.colorIndex = in.u8();
    record.rawX = in.u24();
    in.skip(1);
    record.rawY = in.u24();
    record.kind = in.u8();
    return record;
}

/// Sixths of a millimetre in tenths. Numbers of the upper half are negative, and one more than the usual complement:
/// machines count so.
float tenths(std::uint32_t raw) noexcept {
    constexpr std::int32_t largest = 0x7FFFFF;
    constexpr std::int32_t correction = 0xFFFFFF;
    const auto value = static_cast<std::int32_t>(raw);
    return static_cast<float>((value > largest ? value - correction : value) * (5.0 / 3.0));
}

VLMThread threadOf(std::span<const std::uint8_t> color) {
    const auto name = fillPattern(localizedText("COLOR_INDIVIDUAL", "VLMDesign", "Individual color (%i, %i, %i)"),
                                  {std::int64_t{color[0]}, std::int64_t{color[1]}, std::int64_t{color[2]}});
    return VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(color[0] / 255.0, color[1] / 255.0, color[2] / 255.0), name, "", "",
        localizedText("PATTERN_PALETTE", "VLMDesign", "Threadcolors"));
}

struct Place {
    float x = 0;
    float y = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

/// Turns records of absolute places into stitches.
class RecordReader {
public:
    RecordReader(VLMDesign& design, std::span<const std::uint8_t> palette, bool isPcs, std::size_t mostStitches)
        : design_(design),
          palette_(palette),
          isPcs_(isPcs),
          center_{static_cast<float>(design.hoopWidth()) * 5, static_cast<float>(design.hoopHeight()) * 5},
          sink_(design, mostStitches) {}

    [[nodiscard]] std::size_t colorChanges() const noexcept { return colorChanges_; }

    /// Takes the next record; the first one only tells where sewing starts. False, with 164 or 165, when it makes no
    /// sense.
    bool take(const Record& record, VLMError* error) {
        Place place{tenths(record.rawX), tenths(record.rawY)};
        if (place.x > farthestX || place.y > farthestY) return fail(errorTexts, invalidPlace, error);
        place = {place.x - center_.x, place.y - center_.y};
        const bool isChange = isPcs_ && record.kind == colorChangeKind;
        const bool isJump = isPcs_ && record.kind == jumpKind;
        if (isChange && !takeColorChange(record, place, error)) return false;
        // A place that is repeated means that the needle was moved there, not sewn.
        if (VLMStitch* const last = sink_.last(); last && !isChange && !isJump && place == former_)
            last->setIsJumpStitch(true);
        if (!isFirst_) append(place, isJump, isChange);
        isFirst_ = false;
        former_ = place;
        return true;
    }

private:
    bool takeColorChange(const Record& record, Place& place, VLMError* error) {
        const auto offset = static_cast<std::size_t>(record.colorIndex) * colorSize;
        if (offset >= palette_.size()) return fail(errorTexts, invalidColor, error);
        design_.threads().push_back(threadOf(palette_.subspan(offset, colorSize)));
        ++colorChanges_;
        if (record.rawX == 0 || record.rawY == 0) {
            place = former_;
        } else {
            design_.setDesignVersion(versionWithPlacedChanges);
        }
        return true;
    }

    void append(Place place, bool isJump, bool isChange) {
        const float deltaX = place.x - former_.x;
        const float deltaY = place.y - former_.y;
        const bool isLong = std::abs(deltaX) > longestStitch || std::abs(deltaY) > longestStitch;
        sink_.append(deltaX, deltaY, isJump || isLong, isChange);
    }

    VLMDesign& design_;
    std::span<const std::uint8_t> palette_;
    bool isPcs_;
    Place center_;
    VLMStitchSink sink_;
    Place former_;
    bool isFirst_ = true;
    std::size_t colorChanges_ = 0;
};

/// Reads records until `count` of them were no colour records, or until the file ends.
bool readRecords(VLMDesign& design, std::span<const std::uint8_t> records, std::span<const std::uint8_t> palette,
                 std::size_t count, bool isPcs, VLMError* error) {
    RecordReader reader(design, palette, isPcs, records.size() / recordSize);
    for (std::size_t taken = 0; taken - reader.colorChanges() < count && records.size() >= recordSize; ++taken) {
        if (!reader.take(recordOf(records.first(recordSize)), error)) return false;
        records = records.subspan(recordSize);
    }
    return true;
}

bool takeType(VLMDesign& design, std::uint8_t type, VLMError* error) {
    if (type >= types.size()) return fail(errorTexts, invalidType, error);
    design.setDesignType(types[type]);
    if (design.designType() == "PCS") design.setHoopFromVendorwithCode("Pfaff", type);
    design.setDesignVersion(usualVersion);
    return true;
}

}  // namespace

bool readPcx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < headSize) return fail(errorTexts, tooShort, error);
    VLMByteReader in(file);
    if (in.u8() != mark) return fail(errorTexts, noMark, error);
    if (!takeType(design, in.u8(), error)) return false;
    const std::size_t colorCount = in.u16();
    if (colorCount > mostColors) return fail(errorTexts, tooManyColors, error);
    const auto palette = in.take(colorCount * colorSize);
    const std::size_t count = in.u16();
    // Two bytes more than the records take: files end with them.
    if (!in.ok() || in.remaining() < count * recordSize + 2) return fail(errorTexts, tooShort, error);

    const bool isPcs = design.designType() == "PCS";
    if (!readRecords(design, in.rest(), palette, count, isPcs, error)) return false;
    if (design.threads().empty()) appendUndefinedThread(design);
    if (!isPcs) design.setXMin(std::min(design.xMin(), 0.0F));
    return true;
}

bool importPcxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] { return readPcx(design, readWholeFile(url), error); });
}

}  // namespace velamo
