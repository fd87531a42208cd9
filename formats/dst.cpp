#include "formats/dst.h"

#include <array>
#include <string_view>

#include "formats/stitch_sink.h"
#include "formats/undefined_threads.h"
#include "platform/files.h"

namespace velamo {
namespace {

constexpr std::size_t headerSize = 512;
constexpr std::size_t recordSize = 3;
constexpr std::size_t smallestFile = headerSize + recordSize + 1;
constexpr std::size_t searchedSize = headerSize - 1;  // a tag that reaches the header's last byte is not found
constexpr std::uint8_t endMark = 0xF3;

enum Failure : int { tooShort = 123, noLabel = 110, unknownKind = 111 };
constexpr std::array<ErrorText, 11> errorTexts{{
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

/// What each value of one byte of a record adds to the move.
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

enum class Kind : std::uint8_t { unknown, end, stitch, jump, colorChange };
constexpr auto kinds = [] {
    std::array<Kind, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        const unsigned control = byte & 0xC3U;
        table[byte] = byte == endMark   ? Kind::end
                      : control == 0x03 ? Kind::stitch
                      : control == 0x83 ? Kind::jump
                      : control == 0xC3 ? Kind::colorChange
                                        : Kind::unknown;
    }
    return table;
}();

bool checkHeader(std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < smallestFile) return fail(errorTexts, tooShort, error);
    const std::string_view header(reinterpret_cast<const char*>(file.data()), searchedSize);
    for (const Tag& tag : tags)
        if (header.find(tag.text) == header.npos) return fail(errorTexts, tag.failureWithout, error);
    return true;
}

/// The kind of the first record. The file's last three bytes end the design too: the end mark is expected there, and
/// whatever else stands there is not looked at.
Kind kindOf(std::span<const std::uint8_t> records) {
    return records.size() > recordSize ? kinds[records[2]] : Kind::end;
}

DecodedStitch decode(std::span<const std::uint8_t, recordSize> record, Kind kind) {
    const CoordinatePair delta = firstByte[record[0]] + secondByte[record[1]] + thirdByte[record[2]];
    return {delta, kind == Kind::jump, kind == Kind::colorChange};
}

bool readStitches(VLMDesign& design, std::span<const std::uint8_t> records, VLMError* error) {
    std::size_t colorChanges = 0;
    VLMStitchSink sink(design, records.size() / recordSize);
    sink.appendWhile([&](DecodedStitch& stitch) {
        const Kind kind = kindOf(records);
        if (kind == Kind::end || kind == Kind::unknown) return false;
        stitch = decode(records.first<recordSize>(), kind);
        colorChanges += kind == Kind::colorChange;
        records = records.subspan(recordSize);
        return true;
    });
    for (; colorChanges > 0; --colorChanges) appendUndefinedThread(design);
    return kindOf(records) == Kind::end || fail(errorTexts, unknownKind, error);
}

}  // namespace

bool readDst(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (!checkHeader(file, error)) return false;
    appendUndefinedThread(design);
    return readStitches(design, file.subspan(headerSize), error);
}

bool importDstDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        design.setDesignType("DST");
        design.setDesignVersion(10);
        return readDst(design, readWholeFile(url), error);
    });
}

}  // namespace velamo
