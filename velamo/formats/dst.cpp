#include "velamo/formats/dst.h"

#include <array>
#include <cmath>
#include <string_view>

#include "velamo/formats/byte_writer.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/stitch_sink.h"
#include "velamo/formats/undefined_threads.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/failure.h"
#include "velamo/platform/text/narrow_text.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::size_t headerSize = 512;
constexpr std::size_t recordSize = 3;
constexpr std::size_t smallestFile = headerSize + recordSize + 1;
constexpr std::size_t searchedSize = headerSize - 1;  // a tag that reaches the header's last byte is not found
constexpr std::uint8_t endMark = 0xF3;
constexpr std::uint8_t jumpMark = 0x83;

enum Failure : int {
    tooShort = 123,
    noLabel = 110,
    unknownKind = 111,
    invalidBounds = 130,
    endTooFar = 132,
    tooManyStitches = 133,
    tooManyColors = 134
};
constexpr std::array<ErrorText, 15> errorTexts{{
    {tooShort, "Unable to import DST file (missing header)."},
    {noLabel, "Unable to import DST file (missing LA: tag in header)."},
    {unknownKind, "Unable to import DST file (invalid function codes)."},
    {112, "Unable to import DST file (missing ST: tag in header)."},
    {113, "Unable to import DST file (missing CO: tag in header)."},
    {114, "Unable to import DST file (missing +X: tag in header)."},
    {115, "Unable to import DST file (missing -X: tag in header)."},
    {116, "Unable to import DST file (missing +Y: tag in header)."},
    {117, "Unable to import DST file (missing -Y: tag in header)."},
    {118, "Unable to import DST file (missing AX: tag in header)."},
    {119, "Unable to import DST file (missing AY: tag in header)."},
    {invalidBounds, "Unable to export DST file (invalid bounderies)."},
    {endTooFar, "Unable to export DST file (AX/AY values too large)."},
    {tooManyStitches, "Unable to export DST file (too many stitches)."},
    {tooManyColors, "Unable to export DST file (too many color changes)."},
}};

struct Tag {
    std::string_view text;
    int failureWithout;
};
constexpr std::array<Tag, 9> tags{{
    {"LA:", noLabel},
    {"ST:", 112},
    {"CO:", 113},
    {"+X:", 114},
    {"-X:", 115},
    {"+Y:", 116},
    {"-Y:", 117},
    {"AX:", 118},
    {"AY:", 119},
}};

/// What each value of one byte of a record adds to the move. A file is decoded in 30 % of the time that the bits take
/// one by one.
using MoveTable = std::array<CoordinatePair, 256>;

/// The weights of a byte's bits: bits 0 and 7 add the smaller one, 1 and 6 take it away; likewise 2, 5 and 3, 4 the
/// larger.
constexpr MoveTable movesOf(int smallWeight, int largeWeight) {
    MoveTable moves{};
    for (unsigned byte = 0; byte < moves.size(); ++byte) {
        const auto bit = [byte](unsigned number) { return static_cast<int>(byte >> number & 1U); };
        moves[byte] =
            CoordinatePair{static_cast<float>(smallWeight * (bit(0) - bit(1)) + largeWeight * (bit(2) - bit(3))),
                           static_cast<float>(smallWeight * (bit(7) - bit(6)) + largeWeight * (bit(5) - bit(4)))};
    }
    return moves;
}
constexpr MoveTable firstByte = movesOf(1, 9);
constexpr MoveTable secondByte = movesOf(3, 27);
constexpr MoveTable thirdByte = movesOf(0, 81);  // its outer bits tell the kind of the record

enum class Kind : std::uint8_t { unknown, end, move, colorChange };
/// What a record's third byte says of it.
constexpr Kind kindOf(std::uint8_t byte) noexcept {
    if (byte == endMark) return Kind::end;
    switch (byte & 0xC3U) {
        case 0x03:
        case jumpMark:
            return Kind::move;
        case 0xC3:
            return Kind::colorChange;
        default:
            return Kind::unknown;
    }
}

bool checkHeader(std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, tooShort, error);
    const std::string_view header(reinterpret_cast<const char*>(file.data()), searchedSize);
    for (const Tag& tag : tags)
        if (header.find(tag.text) == header.npos) return fail(errorTexts, tag.failureWithout, error);
    return true;
}

CoordinatePair moveOf(std::span<const std::uint8_t, recordSize> record) noexcept {
    return firstByte[record[0]] + secondByte[record[1]] + thirdByte[record[2]];
}

/// Appends the stitches and jumps at the front of the records; what is left.
std::span<const std::uint8_t> appendMoves(StitchSink& sink, std::span<const std::uint8_t> records) {
    sink.appendWhile([&records](DecodedStitch& stitch) {
        if (records.empty() || kindOf(records[2]) != Kind::move) return false;
        stitch.delta = moveOf(records.first<recordSize>());
        stitch.isJump = records[2] >= jumpMark;
        records = records.subspan(recordSize);
        return true;
    });
    return records;
}

/// Appends all up to a record that ends the design, well or ill, whose kind it gives.
Kind appendStitches(VLMDesign& design, std::span<const std::uint8_t> records) {
    StitchSink sink(design, records.size() / recordSize);
    while (!(records = appendMoves(sink, records)).empty()) {
        if (kindOf(records[2]) != Kind::colorChange) return kindOf(records[2]);
        const CoordinatePair move = moveOf(records.first<recordSize>());
        sink.append(move[0], move[1], false, true);
        appendUndefinedThread(design);
        records = records.subspan(recordSize);
    }
    return Kind::end;
}

bool readStitches(VLMDesign& design, std::span<const std::uint8_t> bytes, VLMError* error) {
    // The file's last three bytes end the design too: the end mark is expected there, and whatever else stands there is
    // not looked at.
    const std::size_t records = bytes.empty() ? 0 : (bytes.size() - 1) / recordSize;
    return appendStitches(design, bytes.first(records * recordSize)) == Kind::end ||
           fail(errorTexts, unknownKind, error);
}

constexpr std::int64_t mostRecords = 9999998;  // with the end mark, what seven digits hold
constexpr std::int32_t mostThreads = 1000;
constexpr float farthest = 99999;  // what five digits hold
constexpr std::size_t labelSize = 16;

/// Whether the box that the stitches fill holds the place where sewing starts, and its edges fit the header.
bool areWritable(float least, float greatest) noexcept {
    return greatest >= 0 && least <= 0 && greatest <= farthest && least >= -farthest;
}

bool isWritable(DesignPoint end) noexcept {
    return std::abs(end.x) <= double{farthest} && std::abs(end.y) <= double{farthest};
}

bool checkLimits(const VLMDesign& design, VLMError* error) {
    if (std::int64_t{design.numberOfStitches()} + design.numberOfThreads() > mostRecords)
        return fail(errorTexts, tooManyStitches, error);
    if (design.numberOfThreads() > mostThreads) return fail(errorTexts, tooManyColors, error);
    if (!areWritable(design.xMin(), design.xMax()) || !areWritable(design.yMin(), design.yMax()))
        return fail(errorTexts, invalidBounds, error);
    return isWritable(design.lastStitch()) || fail(errorTexts, endTooFar, error);
}

/// The design's name without its extension.
std::string labelOf(const VLMDesign& design) {
    std::string label = asciiFromText(std::filesystem::path(design.designName().value_or("")).stem().native());
    label.resize(labelSize, ' ');
    return label;
}

/// The sign of a number that becomes 0 without its fraction is a plus.
Text signOf(std::int64_t number) {
    return number < 0 ? "-" : "+";
}

std::string headerOf(const VLMDesign& design) {
    const auto reach = [](float edge) { return wholeNumber(double{std::abs(edge)}); };
    const DesignPoint end = design.lastStitch();
    const std::int64_t endX = wholeNumber(end.x);
    const std::int64_t endY = wholeNumber(end.y);
    std::string header = fillPattern(
        "LA:%@\rST:%7i\rCO:%3i\r+X:%5i\r-X:%5i\r+Y:%5i\r-Y:%5i\rAX:%@%5i\rAY:%@%5i\rMX:+    0\rMY:+    0\r"
        "PD:******\r\x1A",
        {Text(labelOf(design)), std::int64_t{design.numberOfStitches()} + design.numberOfThreads() + 1,
         std::int64_t{design.numberOfThreads()} - 1, reach(design.xMax()), reach(design.xMin()), reach(design.yMax()),
         reach(design.yMin()), signOf(endX), std::abs(endX), signOf(endY), std::abs(endY)});
    header.resize(headerSize, ' ');
    return header;
}

constexpr int longestMove = 121;
constexpr std::array<int, 5> weights{81, 27, 9, 3, 1};

/// The bits of a record for the moves from -121 to 121 along one axis: of each weight as much is taken as the smaller
/// ones cannot make up for. A file is made in a seventh of the time that it takes to weigh each move.
using RecordTable = std::array<std::uint32_t, 2 * longestMove + 1>;
struct WeightBits {
    std::uint32_t plus;
    std::uint32_t minus;
};
constexpr std::uint32_t recordOf(int move, const std::array<WeightBits, weights.size()>& bits) {
    std::uint32_t record = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (2 * move <= weights[i] && -2 * move <= weights[i]) continue;
        record |= move > 0 ? bits[i].plus : bits[i].minus;
        move -= move > 0 ? weights[i] : -weights[i];
    }
    return record;
}
constexpr RecordTable recordsOf(const std::array<WeightBits, weights.size()>& bits) {
    RecordTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = recordOf(static_cast<int>(i) - longestMove, bits);
    return table;
}
// The record's first byte is the lowest of the number.
constexpr RecordTable recordsX =
    recordsOf({{{0x040000, 0x080000}, {0x0400, 0x0800}, {0x04, 0x08}, {0x0100, 0x0200}, {0x01, 0x02}}});
constexpr RecordTable recordsY =
    recordsOf({{{0x200000, 0x100000}, {0x2000, 0x1000}, {0x20, 0x10}, {0x8000, 0x4000}, {0x80, 0x40}}});

/// Takes the move's next record, as far as that reaches; the rest goes on to the next one.
std::uint32_t takeRecord(WholeMoves& moves, float delta, const RecordTable& records) noexcept {
    const float move = moves.take(delta);
    if (std::abs(move) <= longestMove) {
        const int place = static_cast<int>(move) + longestMove;
        return records[static_cast<std::size_t>(place)];
    }
    float rest = move;
    for (const int weight : weights) rest -= std::copysign(static_cast<float>(weight), move);
    moves.carry(rest);
    return std::isnan(move) ? 0 : move > 0 ? records.back() : records.front();
}

std::uint32_t kindOf(const VLMStitch& stitch) noexcept {
    return stitch.isColorChange() ? 0xC30000 : stitch.isJumpStitch() ? 0x830000 : 0x030000;
}

}  // namespace

bool readDst(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (!checkHeader(file, error)) return false;
    appendUndefinedThread(design);
    return readStitches(design, file.subspan(headerSize), error);
}

bool importDstDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("DST");
        design.setDesignVersion(10);
        return readDst(design, loadFile(url, options), error);
    });
}

std::optional<std::vector<std::uint8_t>> writeDst(const VLMDesign& design, VLMError* error) {
    if (!checkLimits(design, error)) return std::nullopt;
    ByteWriter out(headerSize + recordSize * (design.stitches().size() + 2));
    out.text(headerOf(design));
    WholeMoves movesX;
    WholeMoves movesY;
    out.records(std::span(design.stitches().all()), [&](const VLMStitch& stitch) -> ByteRecord {
        const std::uint32_t x = takeRecord(movesX, stitch.deltaX(), recordsX);
        return {x | takeRecord(movesY, stitch.deltaY(), recordsY) | kindOf(stitch), recordSize};
    });
    out.text({"\x00\x00\xF3\x1A", 4});
    return out.take();
}

bool exportDstDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error, [&] {
        const auto file = writeDst(design, error);
        return file && saveWithoutColors(design, url, *file, "DST", options, error);
    });
}

}  // namespace velamo
