#include "formats/ksm.h"

#include <array>

#include "formats/stitch_sink.h"
#include "formats/undefined_threads.h"
#include "platform/files.h"

namespace velamo {
namespace {

constexpr std::size_t headerSize = 512;
constexpr std::size_t recordSize = 3;
constexpr std::uint8_t endMark = 0x88;

enum Failure : int { tooShort = 170, invalidRecord = 171 };
constexpr std::array<ErrorText, 2> errorTexts{{
    {tooShort, "Unable to read KSM (file too small)"},
    {invalidRecord, "Unable to read KSM (invalid stich data)"},
}};

/// What a record's flags say.
struct Flags {
    bool isValid = false;
    bool startsJumps = false;
    bool isColorChange = false;
    bool endsJumps = false;
    std::int8_t signX = 1;
    std::int8_t signY = 1;
};
constexpr auto flagTable = [] {
    std::array<Flags, 256> table{};
    for (unsigned flags = 0x80; flags < table.size(); ++flags)
        table[flags] = {.isValid = true,
                        .startsJumps = flags == 0x89 || (flags & 0x8FU) == 0x87,
                        .isColorChange = flags == 0x8B || (flags & 0x8CU) == 0x8C,
                        .endsJumps = (flags & 0x9EU) == 0x98,
                        .signX = static_cast<std::int8_t>(flags & 0x40U ? -1 : 1),
                        .signY = static_cast<std::int8_t>(flags & 0x20U ? -1 : 1)};
    return table;
}();

/// Whether reading ends at a record of these flags, be it well or ill.
bool isLast(std::uint8_t flags) noexcept {
    return flags == endMark || !flagTable[flags].isValid;
}

bool readStitches(VLMDesign& design, std::span<const std::uint8_t> records, VLMError* error) {
    VLMStitchSink sink(design, records.size() / recordSize);
    bool isJumping = true;
    std::size_t colorChanges = 0;
    sink.appendWhile([&](DecodedStitch& stitch) {
        if (records.size() < recordSize || isLast(records[2])) return false;
        const Flags& flags = flagTable[records[2]];
        const bool isJump = isJumping || flags.startsJumps || flags.isColorChange;
        stitch.delta =
            CoordinatePair{static_cast<float>(records[1] * flags.signX), static_cast<float>(records[0] * flags.signY)};
        stitch.isJump = isJump;
        stitch.isChange = flags.isColorChange;
        isJumping = isJump && !flags.endsJumps;
        colorChanges += flags.isColorChange;
        records = records.subspan(recordSize);
        return true;
    });
    for (; colorChanges > 0; --colorChanges) appendUndefinedThread(design);
    const bool isValid = records.size() < recordSize || flagTable[records[2]].isValid;
    return isValid || fail(errorTexts, invalidRecord, error);
}

}  // namespace

bool readKsm(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < headerSize + recordSize) return fail(errorTexts, tooShort, error);
    appendUndefinedThread(design);
    return readStitches(design, file.subspan(headerSize), error);
}

bool importKsmDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        design.setDesignType("KSM");
        design.setDesignVersion(10);
        return readKsm(design, readWholeFile(url), error);
    });
}

}  // namespace velamo
