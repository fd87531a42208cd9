#include "velamo/formats/pcs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "velamo/formats/byte_reader.h"
#include "velamo/formats/byte_writer.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/hoop_choice.h"
#include "velamo/formats/save_file.h"
#include "velamo/formats/stitch_sink.h"
#include "velamo/formats/undefined_threads.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/failure.h"
#include "velamo/platform/text/resources.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::uint8_t mark = 0x32;
constexpr const char* vendor = "Pfaff";
constexpr std::size_t headSize = 6;  // without the palette
constexpr std::size_t colorSize = 4;
constexpr std::size_t recordSize = 9;
constexpr std::size_t kindOffset = 8;
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
    invalidPlace = 165,
    tooManyThreads = 180,
    tooManyStitches = 181
};
constexpr std::array<ErrorText, 8> errorTexts{{
    {tooShort, "Unable to read PCx (file too small)"},
    {noMark, "Unable to read PCx (missing magic)"},
    {invalidType, "Unable to read PCx (invalid type)"},
    {tooManyColors, "Unable to read PCx (color palette > 16)"},
    {invalidColor, "Unable to read PCS (invalid color index)"},
    {invalidPlace, "Unable to read PCx (invalid stitch position)"},
    {tooManyThreads, "Unable to export PCS file (too many colors)."},
    {tooManyStitches, "Unable to export PCS file (too many stitches)."},
}};
// JEF files word these differently: a string table, whose keys are the numbers, cannot hold both texts, so they are in
// English everywhere.
constexpr std::array<ErrorText, 2> hoopErrorTexts{{
    {60, "Operation aborted: Design exceeds largest hoop size."},
    {51, "Unable to export file (unsupported hoop)."},
}};

constexpr std::array<const char*, 4> types{"PCD", "PCQ", "PCS", "PCS"};

constexpr int colorChangeKind = 3;
constexpr int jumpKind = 4;
struct Record {
    std::size_t colorIndex = 0;
    std::uint32_t rawX = 0;
    std::uint32_t rawY = 0;
    int kind = 0;

    /// Without one a colour is changed where the needle is.
    [[nodiscard]] bool hasPlace() const noexcept { return rawX != 0 && rawY != 0; }
};

/// The first three bytes as a number. Four are taken, which the processor does in one step: 87 % of the time that it
/// takes to decode a file with three.
std::uint32_t number24(std::span<const std::uint8_t, 4> bytes) noexcept {
    const std::uint32_t number =
        bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
    return number & 0xFFFFFFU;
}

Record recordOf(std::span<const std::uint8_t, recordSize> bytes) noexcept {
    return {bytes[0], number24(bytes.subspan<1, 4>()), number24(bytes.subspan<5, 4>()), bytes[kindOffset]};
}

/// Sixths of a millimetre in tenths. Numbers of the upper half are negative, and one more than the usual complement:
/// machines count so.
constexpr float tenths(std::uint32_t raw) noexcept {
    constexpr std::int32_t largest = 0x7FFFFF;
    constexpr std::int32_t correction = 0xFFFFFF;
    const auto value = static_cast<std::int32_t>(raw);
    return static_cast<float>((value > largest ? value - correction : value) * (5.0 / 3.0));
}

// The farthest places that are taken, as records have them: nearly all of a file's lie between 0 and these. To look
// them up decodes a file in 83 % of the time.
constexpr std::uint32_t mostX = 720;
constexpr std::uint32_t mostY = 690;
constexpr auto tenthsOnHoop = [] {
    std::array<float, mostX + 1> values{};
    for (std::uint32_t raw = 0; raw < values.size(); ++raw) values[raw] = tenths(raw);
    return values;
}();

CoordinatePair placeOnHoop(const Record& record) noexcept {
    return CoordinatePair{tenthsOnHoop[record.rawX], tenthsOnHoop[record.rawY]};
}

VLMThread threadOf(std::span<const std::uint8_t> color) {
    const auto name = fillPattern(localizedText("COLOR_INDIVIDUAL", "VLMDesign", "Individual color (%i, %i, %i)"),
                                  {std::int64_t{color[0]}, std::int64_t{color[1]}, std::int64_t{color[2]}});
    return VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(color[0] / 255.0, color[1] / 255.0, color[2] / 255.0), name, "", "",
        localizedText("PATTERN_PALETTE", "VLMDesign", "Threadcolors"));
}

// Both coordinates in one comparison: of two, the branch between them would be guessed wrong too often, and a file is
// decoded in 84 % of the time.
bool isLong(CoordinatePair way) noexcept {
    return std::max(std::abs(way[0]), std::abs(way[1])) > longestStitch;
}
bool isNull(CoordinatePair way) noexcept {
    return std::abs(way[0]) + std::abs(way[1]) == 0;
}

/// The kinds of records that mean something in a file; the older files know none.
struct Kinds {
    int change = colorChangeKind;
    int jump = jumpKind;
};
constexpr Kinds noKinds{-1, -1};

/// Turns the places of records into the ways between them, and colour records into threads too.
class RecordReader {
public:
    /// Reads until `count` records were no colour records.
    RecordReader(VLMDesign& design, std::span<const std::uint8_t> records, std::span<const std::uint8_t> palette,
                 std::size_t count, Kinds kinds)
        : design_(design),
          rest_(records),
          palette_(palette),
          count_(count),
          kinds_(kinds),
          center_{static_cast<float>(design.hoopWidth()) * 5, static_cast<float>(design.hoopHeight()) * 5},
          sink_(design, records.size() / recordSize) {}

    /// Why a record makes no sense, or 0. The stitches and threads of those before it stay.
    int read() {
        while (hasNext()) {
            if (const int failure = takeNext(); failure != 0) return failure;
            takeOrdinary();
        }
        return 0;
    }

private:
    [[nodiscard]] bool hasNext() const noexcept { return count_ > 0 && rest_.size() >= recordSize; }

    /// Takes ordinary records that move, in a loop of their own: nearly all are such, and a file is decoded in 37 % of
    /// the time.
    void takeOrdinary() {
        auto records = rest_.first(std::min(count_, rest_.size() / recordSize) * recordSize);
        const std::size_t size = records.size();
        auto former = former_;
        sink_.appendWhile([&records, &former, kinds = kinds_, center = center_](DecodedStitch& stitch) {
            if (records.empty()) return false;
            const Record record = recordOf(records.first<recordSize>());
            if (record.rawX > mostX || record.rawY > mostY || record.kind == kinds.change) return false;
            const CoordinatePair place = placeOnHoop(record) - center;
            stitch.delta = place - former;
            if (isNull(stitch.delta)) return false;
            stitch.isJump = record.kind == kinds.jump || isLong(stitch.delta);
            former = place;
            records = records.subspan(recordSize);
            return true;
        });
        former_ = former;
        count_ -= (size - records.size()) / recordSize;
        rest_ = rest_.subspan(size - records.size());
    }

    /// Takes a record of any kind, or says why it makes no sense.
    int takeNext() {
        const Record record = recordOf(rest_.first<recordSize>());
        const bool isChange = record.kind == kinds_.change;
        const CoordinatePair fromCorner{tenths(record.rawX), tenths(record.rawY)};
        if (fromCorner[0] > farthestX || fromCorner[1] > farthestY) return invalidPlace;
        if (isChange && record.colorIndex >= palette_.size() / colorSize) return invalidColor;
        if (isChange) takeColor(record);
        const CoordinatePair place = isChange && !record.hasPlace() ? former_ : fromCorner - center_;
        append(place - former_, record.kind == kinds_.jump, isChange);
        former_ = place;
        count_ -= isChange ? 0 : 1;
        rest_ = rest_.subspan(recordSize);
        return 0;
    }

    void append(CoordinatePair way, bool isJump, bool isChange) {
        // The first record only tells where sewing starts.
        if (std::exchange(isStart_, false)) return;
        // A place that is repeated means that the needle was moved there, not sewn.
        const bool isRepeated = isNull(way) && !isJump && !isChange;
        if (VLMStitch* const last = sink_.last(); isRepeated && last != nullptr) last->setIsJumpStitch(true);
        sink_.append(way[0], way[1], isJump || isLong(way), isChange);
    }

    void takeColor(const Record& record) {
        auto& thread = threads_[record.colorIndex];
        if (!thread) thread = threadOf(palette_.subspan(record.colorIndex * colorSize, colorSize));
        design_.threads().push_back(*thread);
        if (record.hasPlace()) design_.setDesignVersion(versionWithPlacedChanges);
    }

    VLMDesign& design_;
    std::span<const std::uint8_t> rest_;
    std::span<const std::uint8_t> palette_;
    std::size_t count_;
    Kinds kinds_;
    bool isStart_ = true;
    CoordinatePair center_;
    CoordinatePair former_{};
    std::array<std::optional<VLMThread>, mostColors> threads_;  // those of one colour share their texts
    StitchSink sink_;
};

bool takeType(VLMDesign& design, std::uint8_t type, VLMError* error) {
    if (type >= types.size()) return fail(errorTexts, invalidType, error);
    design.setDesignType(types[type]);
    if (design.designType() == "PCS") design.setHoopFromVendorwithCode(vendor, type);
    design.setDesignVersion(usualVersion);
    return true;
}

constexpr std::int32_t mostWrittenStitches = 14000;
constexpr std::size_t endSize = 13;

bool checkLimits(const VLMDesign& design, VLMError* error) {
    if (design.numberOfThreads() > mostColors) return fail(errorTexts, tooManyThreads, error);
    return design.numberOfStitches() <= mostWrittenStitches || fail(errorTexts, tooManyStitches, error);
}

void putColors(ByteWriter& out, VLMDesign& design) {
    for (VLMThread& thread : design.threads()) {
        const VLMColor color = thread.color();
        if (!design.useThreadFile()) thread.changeToColorinPalette(color, "");
        for (const double part : {color.red(), color.green(), color.blue()}) out.u8(wholeNumber(part * 255));
        out.u8(0);
    }
    out.fill((mostColors - design.threads().size()) * colorSize, 0);
}

void putColorRecord(ByteWriter& out, std::uint8_t index) {
    out.u8(index);
    out.fill(recordSize - 2, 0);
    out.u8(colorChangeKind);
}

/// Along one axis, the place of the hoop's middle in tenths of a millimetre from its corner.
double middleOf(std::int32_t hoopSize) noexcept {
    return hoopSize * 10 * 0.5;
}

/// Tenths of a millimetre in sixths, with the places left of the corner as tenths() reads them.
std::uint64_t sixths(double place) noexcept {
    const std::int64_t whole = wholeNumber(std::round(place * 0.6));
    return static_cast<std::uint64_t>(whole < 0 ? whole + 0xFFFFFF : whole) & 0xFFFFFFU;
}

void putStitches(ByteWriter& out, const VLMDesign& design) {
    const double middleX = middleOf(design.hoopWidth());
    const double middleY = middleOf(design.hoopHeight());
    CoordinatePair place{};
    std::uint8_t colorIndex = 0;
    putColorRecord(out, colorIndex++);
    for (const VLMStitch& stitch : design.stitches()) {
        if (stitch.isColorChange()) putColorRecord(out, colorIndex++);
        place += CoordinatePair{stitch.deltaX(), stitch.deltaY()};
        out.put(sixths(middleX + double{place[0]}) << 8 | sixths(middleY + double{place[1]}) << 40, kindOffset);
        out.u8(stitch.isJumpStitch() ? jumpKind : 0);
    }
}

}  // namespace

bool readPcx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < headSize) return fail(errorTexts, tooShort, error);
    ByteReader in(file);
    if (in.u8() != mark) return fail(errorTexts, noMark, error);
    if (!takeType(design, in.u8(), error)) return false;
    const std::size_t colorCount = in.u16();
    if (colorCount > mostColors) return fail(errorTexts, tooManyColors, error);
    const auto palette = in.take(colorCount * colorSize);
    const std::size_t count = in.u16();
    // Two bytes more than the records take: files end with them.
    if (!in.ok() || in.remaining() < count * recordSize + 2) return fail(errorTexts, tooShort, error);

    const bool isPcs = design.designType() == "PCS";
    const int failure = RecordReader(design, in.rest(), palette, count, isPcs ? Kinds{} : noKinds).read();
    if (failure != 0) return fail(errorTexts, failure, error);
    if (design.threads().empty()) appendUndefinedThread(design);
    if (!isPcs) design.setXMin(std::min(design.xMin(), 0.0F));
    return true;
}

bool importPcxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] { return readPcx(design, loadFile(url, options), error); });
}

std::optional<std::vector<std::uint8_t>> writePcs(VLMDesign& design, VLMError* error) {
    if (!checkLimits(design, error) || !chooseHoop(design, vendor, hoopErrorTexts, error)) return std::nullopt;
    ByteWriter out(headSize + mostColors * colorSize + recordSize * (design.stitches().size() + mostColors + 2));
    out.u8(mark);
    out.u8(design.hoopCode());
    out.u16(mostColors);
    putColors(out, design);
    out.u16(design.numberOfStitches());
    putStitches(out, design);
    out.fill(endSize, 0);
    return out.take();
}

bool exportPcsDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error, [&] {
        const auto file = writePcs(design, error);
        if (!file || !saveFile(url, *file, options, error)) return false;
        design.setDesignType("PCS");
        design.setDesignVersion(usualVersion);
        return true;
    });
}

}  // namespace velamo
