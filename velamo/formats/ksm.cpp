#include "velamo/formats/ksm.h"

#include <array>

#include "velamo/formats/byte_moves.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/undefined_threads.h"
#include "velamo/model/failure.h"

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
    bool isPlain = false;  // a stitch or a jump like the one before
};
constexpr auto flagTable = [] {
    std::array<Flags, 256> table{};
    for (unsigned number = 0x80; number < table.size(); ++number) {
        Flags& flags = table[number];
        flags.isValid = true;
        flags.isColorChange = number == 0x8B || (number & 0x8CU) == 0x8C;
        flags.startsJumps = number == 0x89 || (number & 0x8FU) == 0x87 || flags.isColorChange;
        flags.endsJumps = (number & 0x9EU) == 0x98;
        flags.isPlain = number != endMark && !flags.startsJumps && !flags.endsJumps;
    }
    return table;
}();

/// What a byte is worth rightward or upward, and in the other direction.
constexpr std::array<ByteValues, 2> values{byteValues([](int byte) { return static_cast<float>(byte); }),
                                           byteValues([](int byte) { return static_cast<float>(-byte); })};

CoordinatePair moveOf(std::span<const std::uint8_t, recordSize> record) noexcept {
    return CoordinatePair{values[record[2] >> 6 & 1U][record[1]], values[record[2] >> 5 & 1U][record[0]]};
}

/// The stitches of a file, one run of plain records after the other.
class RecordReader {
public:
    RecordReader(VLMDesign& design, std::span<const std::uint8_t> records)
        : records_(records), sink_(design, records.size() / recordSize) {}

    /// Appends what comes before the first record that is the last, be it well or ill.
    void read() {
        while (!isAtEnd()) {
            if (flagTable[records_[2]].isPlain)
                appendPlain();
            else
                appendMarked();
        }
    }
    [[nodiscard]] bool endsWell() const noexcept { return !hasRecord() || flagTable[records_[2]].isValid; }
    [[nodiscard]] std::size_t colorChanges() const noexcept { return colorChanges_; }

private:
    [[nodiscard]] bool hasRecord() const noexcept { return records_.size() >= recordSize; }
    [[nodiscard]] bool isAtEnd() const noexcept {
        return !hasRecord() || records_[2] == endMark || !flagTable[records_[2]].isValid;
    }

    void appendPlain() {
        auto records = records_;
        sink_.appendWhile([&records, isJump = isJumping_](DecodedStitch& stitch) {
            if (records.size() < recordSize || !flagTable[records[2]].isPlain) return false;
            stitch.delta = moveOf(records.first<recordSize>());
            stitch.isJump = isJump;
            records = records.subspan(recordSize);
            return true;
        });
        records_ = records;
    }

    void appendMarked() {
        const Flags flags = flagTable[records_[2]];
        const CoordinatePair move = moveOf(records_.first<recordSize>());
        const bool isJump = isJumping_ || flags.startsJumps;
        sink_.append(move[0], move[1], isJump, flags.isColorChange);
        isJumping_ = isJump && !flags.endsJumps;
        colorChanges_ += flags.isColorChange ? 1 : 0;
        records_ = records_.subspan(recordSize);
    }

    std::span<const std::uint8_t> records_;
    StitchSink sink_;
    bool isJumping_ = true;
    std::size_t colorChanges_ = 0;
};

bool readStitches(VLMDesign& design, std::span<const std::uint8_t> records, VLMError* error) {
    RecordReader reader(design, records);
    reader.read();
    for (std::size_t i = 0; i < reader.colorChanges(); ++i) appendUndefinedThread(design);
    return reader.endsWell() || fail(errorTexts, invalidRecord, error);
}

}  // namespace

bool readKsm(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() < headerSize + recordSize) return fail(errorTexts, tooShort, error);
    appendUndefinedThread(design);
    return readStitches(design, file.subspan(headerSize), error);
}

bool importKsmDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("KSM");
        design.setDesignVersion(10);
        return readKsm(design, loadFile(url, options), error);
    });
}

}  // namespace velamo
