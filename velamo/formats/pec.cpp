#include "velamo/formats/pec.h"

#include <algorithm>
#include <array>
#include <optional>

#include "velamo/formats/byte_moves.h"
#include "velamo/formats/byte_writer.h"
#include "velamo/formats/palette_change.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/failure.h"
#include "velamo/model/thread_codes.h"
#include "velamo/platform/text/narrow_text.h"

namespace velamo {
namespace {

// Offsets from behind the section's mark.
constexpr std::size_t markSize = 3;
constexpr std::size_t colorsOffset = 49 - markSize;
constexpr std::size_t graphicOffset = 512 - markSize;
constexpr std::size_t thumbnailOffset = 514 - markSize;
constexpr std::size_t sizeOffset = 520 - markSize;
constexpr std::size_t startOffset = 528 - markSize;
constexpr std::size_t startSize = 4;
constexpr std::size_t smallestSegment = startOffset + startSize;

constexpr std::uint8_t endMark = 0xFF;
constexpr std::uint8_t changeMark = 0xFE;
constexpr std::uint8_t secondChangeMark = 0xB0;
constexpr std::size_t changeSize = 3;
constexpr std::size_t shortestMove = 2;
constexpr std::size_t jumpSize = 4;

constexpr const char* palette = "Brother";
constexpr const char* usualKey = "005";

enum Failure : int { noAttributes = 190, noBitmaps = 191, noEnd = 192 };
constexpr std::array<ErrorText, 3> errorTexts{{
    {noAttributes, "Unable to import PEC segment (segment too small for attributes)."},
    {noBitmaps, "Unable to import PEC segment (segment too small for bitmap pointer)."},
    {noEnd, "Unable to import PEC segment (stitches not terminated)."},
}};

/// The lower 12 bits of two bytes as a signed number.
int longValue(unsigned first, unsigned second) noexcept {
    const auto value = static_cast<int>((first & 0x0FU) << 8 | second);
    return (value ^ 0x800) - 0x800;
}

/// One byte below 0x80 as a signed number.
constexpr int shortValue(int byte) noexcept {
    return (byte ^ 0x40) - 0x40;
}

constexpr ByteValues shortX = byteValues([](std::uint8_t byte) { return static_cast<float>(shortValue(byte)); });
constexpr ByteValues shortY = byteValues([](std::uint8_t byte) { return static_cast<float>(-shortValue(byte)); });

constexpr auto areShort = [](std::uint8_t x, std::uint8_t y) { return (x | y) < 0x80; };

struct Coordinate {
    int value = 0;
    bool hasFlags = false;  // a long form that is not just the sign's continuation of a short one
    std::size_t size = 0;   // 0: the bytes end within it
};

Coordinate coordinateAt(std::span<const std::uint8_t> bytes) noexcept {
    if (bytes.empty()) return {};
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {shortValue(first), false, 1};
    if (bytes.size() < 2) return {};
    return {longValue(first, bytes[1]), first != 0x80 && first != 0x8F, 2};
}

/// A jump from the origin to where sewing starts: the start coordinates count from the corner of the bounds, so the
/// design comes to lie around the origin.
void appendStart(StitchSink& sink, std::span<const std::uint8_t> segment, std::size_t offset) {
    ByteReader size(segment, sizeOffset);
    const float halfWidth = static_cast<float>(size.i16()) * 0.5F;
    const float halfHeight = static_cast<float>(size.i16()) * 0.5F;
    ByteReader start(segment, static_cast<std::int64_t>(offset));
    std::array<unsigned, startSize> bytes{};
    for (unsigned& byte : bytes) byte = start.u8();
    sink.append(static_cast<float>(longValue(bytes[0], bytes[1])) - halfWidth,
                halfHeight - static_cast<float>(longValue(bytes[2], bytes[3])), true, false);
}

/// Appends the short moves at the front of the stream that begin before its last `sizeBehind` bytes; what is left.
std::span<const std::uint8_t> appendShortMoves(StitchSink& sink, std::span<const std::uint8_t> stream,
                                               std::size_t sizeBehind) {
    if (stream.size() <= sizeBehind) return stream;
    const auto moves = stream.first(std::min(stream.size() - sizeBehind + 1, stream.size()));
    const std::size_t rest = appendBytePairs(sink, moves, shortX, shortY, areShort).size();
    return stream.subspan(moves.size() - rest);
}

/// Appends the moves of the stream up to its end mark. The records may reach past `length` bytes, but none begins
/// there. The number of colour blocks, or 0 when no end mark was found.
std::uint32_t readMoves(StitchSink& sink, std::span<const std::uint8_t> stream, std::size_t length) {
    const std::size_t sizeBehind = stream.size() - length;
    std::uint32_t blocks = 1;
    while ((stream = appendShortMoves(sink, stream, sizeBehind)).size() > sizeBehind) {
        if (stream[0] == endMark) return blocks;
        if (stream[0] == changeMark && stream.size() >= 2 && stream[1] == secondChangeMark) {
            sink.append(0, 0, false, true);
            ++blocks;
            stream = stream.subspan(std::min(changeSize, stream.size()));
            continue;
        }
        const Coordinate x = coordinateAt(stream);
        const Coordinate y = coordinateAt(stream.subspan(x.size));
        if (x.size == 0 || y.size == 0) return 0;
        sink.append(static_cast<float>(x.value), static_cast<float>(-y.value), x.hasFlags && y.hasFlags, false);
        stream = stream.subspan(x.size + y.size);
    }
    return 0;
}

VLMThread threadOf(std::uint8_t index) {
    const auto code = brotherCodeOfIndex(index);
    const auto thread = VLMThread::initWithKeyofPalette(code ? Text(*code) : Text(), palette);
    return thread.paletteName() == "" ? VLMThread::initWithKeyofPalette(usualKey, palette) : thread;
}

/// Every block took bytes behind the indices, so there are at least as many bytes as blocks.
void appendThreads(VLMDesign& design, std::span<const std::uint8_t> indices, std::uint32_t blocks) {
    std::array<std::optional<VLMThread>, 256> threads;
    for (const std::uint8_t index : indices.first(blocks)) {
        if (!threads[index]) threads[index] = threadOf(index);
        design.threads().push_back(*threads[index]);
    }
}

// Offsets from the section's mark on, as it is written.
constexpr std::size_t attributesSize = 512;
constexpr std::size_t graphicHeaderSize = 20;
constexpr std::size_t writtenThumbnailOffset = 514;
constexpr std::size_t labelSize = 16;

/// The label, the size of a thumbnail and the threads.
void putAttributes(ByteWriter& out, VLMDesign& design) {
    std::string label = latin1FromText(std::filesystem::path(design.designName().value_or("")).stem().native());
    label.resize(labelSize, ' ');
    constexpr std::string_view gap = "            ";
    out.text("LA:");
    out.text(label);
    out.text("\r");
    out.text(gap);
    out.text({"\xFF\x00\x06\x26", 4});
    out.text(gap);
    out.u8(std::int64_t{design.numberOfThreads()} - 1);
    out.bytes(takeBrotherIndices(design));
    if (out.size() < attributesSize) out.fill(attributesSize - out.size(), ' ');
}

/// The long form's flags say jump.
std::uint64_t longForm(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return 0x90U | (bits >> 8 & 0x0FU) | (bits & 0xFFU) << 8;
}

std::uint64_t shortForm(std::int64_t value) noexcept {
    return static_cast<std::uint64_t>(value < 0 ? value + 0x80 : value) & 0xFFU;
}

/// With a start in the middle of the bounds, sewing starts at the origin.
void putGraphicHeader(ByteWriter& out, const VLMDesign& design) {
    out.u16(0);
    out.u24(0);  // where the thumbnails begin, when it is known
    out.u24(0xF0FF31);
    out.u16(design.designWidth());
    out.u16(design.designHeight());
    out.u16(0x01E0);
    out.u16(0x01B0);
    out.put(longForm(design.designWidth() / 2), 2);
    out.put(longForm(design.designHeight() / 2), 2);
}

void putMoves(ByteWriter& out, const VLMDesign& design) {
    WholePairs moves;
    std::uint64_t parity = 2;  // 2, 1, 2, 1, ... for one colour change after the other
    out.records(std::span(design.stitches().all()), [&](const VLMStitch& stitch) -> ByteRecord {
        if (stitch.isColorChange()) {
            const std::uint64_t former = parity;
            parity ^= 3U;
            return {changeMark | secondChangeMark << 8 | former << 16, changeSize};
        }
        const auto [x, y] = moves.take(stitch.deltaX(), -stitch.deltaY());
        if (stitch.isJumpStitch()) return {longForm(x) | longForm(y) << 16, jumpSize};
        return {shortForm(x) | shortForm(y) << 8, shortestMove};
    });
    out.u8(endMark);
}

}  // namespace

std::uint32_t importPecStichesFromDatawithOffseterror(VLMDesign& design, std::span<const std::uint8_t> segment,
                                                      std::size_t offset, VLMError* error) {
    const std::size_t end = ByteReader(segment, thumbnailOffset).u24() + graphicOffset;
    const std::size_t streamOffset = offset + startSize;
    const std::size_t streamSize = end > streamOffset && end <= segment.size() ? end - streamOffset : 0;
    StitchSink sink(design, streamSize / shortestMove + 1, SinkBounds::widen);
    appendStart(sink, segment, offset);
    if (segment.size() < end) {
        fail(errorTexts, noBitmaps, error);
        return 0;
    }
    const std::uint32_t blocks = streamSize > 0 ? readMoves(sink, segment.subspan(streamOffset), streamSize) : 0;
    if (blocks == 0) fail(errorTexts, noEnd, error);
    return blocks;
}

bool importPecSegmentFromDataerror(VLMDesign& design, std::span<const std::uint8_t> segment, VLMError* error) {
    if (segment.size() < smallestSegment) return fail(errorTexts, noAttributes, error);
    std::uint32_t blocks = importPecStichesFromDatawithOffseterror(design, segment, startOffset, nullptr);
    if (blocks == 0) {
        design.stitches().clear();
        design.resetBounds();
        blocks = importPecStichesFromDatawithOffseterror(design, segment, startOffset + 1, error);
    }
    if (blocks == 0) return false;
    appendThreads(design, segment.subspan(colorsOffset), blocks);
    return true;
}

std::vector<std::uint8_t> takeBrotherIndices(VLMDesign& design) {
    std::vector<std::uint8_t> indices;
    indices.reserve(design.threads().size());
    takeToPalette(design, palette, [&indices](const VLMThread& written) {
        const auto index = brotherIndexOfCode(written.key().value_or(""));
        indices.push_back(static_cast<std::uint8_t>(index.value_or(usualBrotherIndex)));
    });
    return indices;
}

std::size_t sizeOfPecSegment(const VLMDesign& design) noexcept {
    const std::size_t attributes = std::max(attributesSize, colorsOffset + markSize + design.threads().size());
    std::size_t size = attributes + graphicHeaderSize + sizeof endMark;
    for (const VLMStitch& stitch : design.stitches())
        size += stitch.isColorChange() ? changeSize : stitch.isJumpStitch() ? jumpSize : shortestMove;
    return size;
}

std::vector<std::uint8_t> exportPecSegmentToData(VLMDesign& design) {
    ByteWriter out(sizeOfPecSegment(design));
    putAttributes(out, design);
    putGraphicHeader(out, design);
    putMoves(out, design);
    out.replace(writtenThumbnailOffset, static_cast<std::int64_t>(out.size() - attributesSize), 3);
    return out.take();
}

}  // namespace velamo
