#include "velamo/formats/vp3.h"

#include <algorithm>
#include <array>
#include <optional>

#include "velamo/formats/byte_moves.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/model/failure.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::string_view mark = "%vsm%";
constexpr std::int64_t sectionHeadSize = 7;  // up to and with the section's length

enum Failure : int { noHeader = 150, noStitchSection = 151, noHoop = 152, noColors = 153, sectionTooLong = 154 };
constexpr std::array<ErrorText, 5> errorTexts{{
    {noHeader, "Unable to import VP3 file (missing header)."},
    {noStitchSection, "Unable to import VP3 file (no stitch section)."},
    {noHoop, "Unable to import VP3 file (no hoop data)."},
    {noColors, "Unable to import VP3 file (no colors)."},
    {sectionTooLong, "Unable to import VP3 file (file too small for offset)."},
}};

/// A place in micrometres, in the 32-bit arithmetic of the machine: sums and differences wrap around.
struct Place {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

std::int32_t wrappedSum(std::int32_t one, std::int32_t other) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(one) + static_cast<std::uint32_t>(other));
}

std::int32_t wrappedDifference(std::int32_t one, std::int32_t other) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(one) - static_cast<std::uint32_t>(other));
}

/// What stands before the first colour section.
struct Header {
    int colorCount = 0;
    std::int64_t firstSection = 0;
};

/// Whole millimetres, rounded up where there is something to round up.
std::int32_t millimetres(std::int32_t micrometres) noexcept {
    return static_cast<std::int32_t>((std::int64_t{micrometres} + 999) / 1000);
}

HoopHandle hoopOf(std::int32_t width, std::int32_t height) {
    return std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        "", "", 0, millimetres(width), millimetres(height), false, false, false));
}

bool readHeader(VLMDesign& design, std::span<const std::uint8_t> file, Header& header, VLMError* error) {
    ByteReader in(file);
    const auto foundMark = in.take(mark.size());
    in.skip(1);
    in.skip(in.u16be() + 15 - 8);
    const int lengthBeforeHoop = in.u16be();
    if (!in.ok() || !std::equal(foundMark.begin(), foundMark.end(), mark.begin()))
        return fail(errorTexts, noHeader, error);

    in.skip(lengthBeforeHoop + 61 - 2);
    const std::int32_t width = in.i32be();
    const std::int32_t height = in.i32be();
    if (!in.ok()) return fail(errorTexts, noHoop, error);
    design.setDesignHoop(hoopOf(width, height));

    in.skip(in.u16be() + 26 - 2);
    const int lengthBeforeColors = in.u16be();
    if (!in.ok()) return fail(errorTexts, noStitchSection, error);

    in.skip(lengthBeforeColors);
    header.colorCount = in.u16be();
    if (!in.ok() || header.colorCount == 0) return fail(errorTexts, noColors, error);
    header.firstSection = static_cast<std::int64_t>(file.size() - in.remaining());
    return true;
}

VLMColor colorOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) noexcept {
    const auto fraction = [](std::uint8_t byte) { return static_cast<float>(byte) / 255.0F; };
    return VLMColor::initWithRedgreenblue(fraction(red), fraction(green), fraction(blue));
}

constexpr ByteValues yDownward =
    byteValues([](std::uint8_t byte) { return static_cast<float>(-static_cast<std::int8_t>(byte)); });

std::string takeText(ByteReader& in) {
    return textFromLatin1(in.take(in.u16be()));
}

/// The thread of a section whose reader stands at its number of colours; nothing when its texts do not fit in the file.
std::optional<VLMThread> takeThread(ByteReader& in) {
    const int colors = in.u8();
    ByteReader firstColor = in;
    firstColor.skip(1);
    const std::uint8_t red = firstColor.u8();
    const std::uint8_t green = firstColor.u8();
    const std::uint8_t blue = firstColor.u8();
    in.skip(6 * colors + 3);
    const std::string catalogueNumber = takeText(in);
    const std::string description = takeText(in);
    const std::string maker = takeText(in);
    if (!in.ok() || !firstColor.ok()) return std::nullopt;
    const std::string name = description.empty() ? catalogueNumber : description + " (" + catalogueNumber + ")";
    return VLMThread::initWithColorandNameforKeyofPalettewithName(colorOf(red, green, blue), name, "", "", maker);
}

class SectionReader {
public:
    SectionReader(VLMDesign& design, std::span<const std::uint8_t> file)
        : design_(design),
          file_(file),
          size_(static_cast<std::int64_t>(file.size())),
          allowance_(size_ * mostReadings + smallAllowance),
          sink_(design, file.size() / pairSize) {}

    /// Reads the section at `section` and moves it on to the next one; false when something does not fit in the file.
    bool read(std::int64_t& section, bool isLast) {
        ByteReader in(file_, section + 3);
        const std::int64_t next = section + sectionHeadSize + in.i32be();
        const Place start{in.i32be(), in.i32be()};
        if (!in.ok()) return false;
        takeGap(start);
        const auto thread = takeThread(in);
        if (!thread || !isAllowed(positionOf(in) - section)) return false;
        design_.threads().push_back(*thread);
        const Place end{in.i32be(), in.i32be()};
        in.skip(in.u16be() + 7);
        if (!in.ok() || in.remaining() < pairSize) return false;
        if (!isAllowed(std::min(next, size_) - positionOf(in)) || !readStitches(positionOf(in), next)) return false;
        if (!isLast) markColorChange();
        former_ = {wrappedSum(start.x, end.x), wrappedSum(start.y, end.y)};
        section = next;
        return true;
    }

private:
    static constexpr std::int64_t pairSize = 2;
    static constexpr std::int64_t jumpSize = 8;
    static constexpr std::int64_t usedJumpSize = 6;
    static constexpr std::uint8_t escape = 0x80;
    static constexpr std::uint8_t jumpMark = 0x01;

    // A section's length may lead backward, so that the same bytes are read again and a small file could stand for any
    // number of threads and stitches. No true file comes near this many bytes read.
    static constexpr std::int64_t mostReadings = 8;
    static constexpr std::int64_t smallAllowance = 1 << 20;

    bool isAllowed(std::int64_t bytesRead) noexcept {
        allowance_ -= std::max<std::int64_t>(bytesRead, 0);
        return allowance_ >= 0;
    }

    std::int64_t positionOf(const ByteReader& in) const noexcept {
        return size_ - static_cast<std::int64_t>(in.remaining());
    }

    /// The way from the end of the section before to the start of this one, which its first stitch takes along. Its y
    /// is not turned round, unlike that of stitches: that is how machines understand the files.
    void takeGap(Place start) {
        const std::int32_t tenthsX = wrappedDifference(start.x, former_.x) / 100;
        const std::int32_t tenthsY = wrappedDifference(start.y, former_.y) / 100;
        gapX_ = static_cast<float>(tenthsX);
        gapY_ = static_cast<float>(tenthsY);
        constexpr std::int32_t versionWithGaps = 20;
        if (gapX_ != 0 || gapY_ != 0) design_.setDesignVersion(versionWithGaps);
    }

    void append(int x, int y, bool isJump) {
        sink_.append(gapX_ + static_cast<float>(x), gapY_ + static_cast<float>(-y), isJump, false);
        gapX_ = gapY_ = 0;
    }

    /// Appends the plain stitches from the position on, once the way to the section is taken; the position behind them.
    std::int64_t appendPlain(std::int64_t position, std::int64_t next) {
        const std::int64_t end = std::min(next, size_);
        if (position >= end || gapX_ != 0 || gapY_ != 0) return position;
        const auto bytes = file_.subspan(static_cast<std::size_t>(position), static_cast<std::size_t>(end - position));
        const auto isPlain = [](std::uint8_t x, std::uint8_t) { return x != escape; };
        return end - static_cast<std::int64_t>(appendBytePairs(sink_, bytes, signedBytes, yDownward, isPlain).size());
    }

    /// Reads the records that begin before the last byte in front of `next`; false when one does not fit in the file.
    bool readStitches(std::int64_t position, std::int64_t next) {
        while ((position = appendPlain(position, next)) < next - 1) {
            const auto record = file_.subspan(static_cast<std::size_t>(std::min(position, size_)));
            if (record.size() < pairSize) return false;
            const bool isEscaped = record[0] == escape;
            if (isEscaped && record[1] == jumpMark) {
                if (record.size() < usedJumpSize) return false;
                ByteReader place(record, pairSize);
                const std::int16_t x = place.i16be();
                append(x, place.i16be(), true);
                position += jumpSize;
            } else {
                append(isEscaped ? 0 : static_cast<std::int8_t>(record[0]),
                       isEscaped ? 0 : static_cast<std::int8_t>(record[1]), false);
                position += pairSize;
            }
        }
        return true;
    }

    /// The last stitch so far, whichever section it came from, opens the next thread's block.
    void markColorChange() noexcept {
        if (VLMStitch* const last = sink_.last()) last->setIsColorChange(true);
    }

    VLMDesign& design_;
    std::span<const std::uint8_t> file_;
    std::int64_t size_;
    std::int64_t allowance_;
    StitchSink sink_;
    Place former_;
    float gapX_ = 0;
    float gapY_ = 0;
};

}  // namespace

bool readVp3(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    Header header;
    if (!readHeader(design, file, header, error)) return false;
    SectionReader sections(design, file);
    std::int64_t section = header.firstSection;
    for (int i = 0; i < header.colorCount; ++i)
        if (!sections.read(section, i + 1 == header.colorCount)) return fail(errorTexts, sectionTooLong, error);
    return true;
}

bool importVp3DesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("VP3");
        design.setDesignVersion(10);
        return readVp3(design, loadFile(url, options), error);
    });
}

}  // namespace velamo
