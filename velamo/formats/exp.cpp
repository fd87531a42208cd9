#include "velamo/formats/exp.h"

#include <array>

#include "velamo/formats/byte_moves.h"
#include "velamo/formats/escaped_moves.h"
#include "velamo/formats/file_bytes.h"
#include "velamo/formats/undefined_threads.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr std::uint8_t escape = 0x80;
constexpr std::size_t pairSize = 2;
constexpr std::size_t escapedSize = 4;

enum Failure : int { unevenLength = 100 };
constexpr std::array<ErrorText, 1> errorTexts{{
    {unevenLength, "Unable to read EXP: file contains uneven number of bytes."},
}};

void readEscaped(VLMDesign& design, StitchSink& sink, std::span<const std::uint8_t, escapedSize> record) {
    const auto control = static_cast<std::int8_t>(record[1]);
    if (control % 2 == 1) {
        appendUndefinedThread(design);
        sink.append(0, 0, false, true);
    } else if (record[1] == escape) {
        sink.append(0, 0, false, false);
    } else {
        sink.append(signedByte(record[2]), signedByte(record[3]), true, false);
    }
}

void readStitches(VLMDesign& design, std::span<const std::uint8_t> bytes) {
    StitchSink sink(design, bytes.size() / pairSize);
    while ((bytes = appendBytePairs(sink, bytes, escape)).size() >= escapedSize) {
        readEscaped(design, sink, bytes.first<escapedSize>());
        bytes = bytes.subspan(escapedSize);
    }
}

}  // namespace

bool readExp(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    if (file.size() % pairSize != 0) return fail(errorTexts, unevenLength, error);
    appendUndefinedThread(design);
    readStitches(design, file);
    return true;
}

bool importExpDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                 const ImportOptions& options) noexcept {
    return operation(error, [&] {
        design.setDesignType("EXP");
        design.setDesignVersion(10);
        return readExp(design, loadFile(url, options), error);
    });
}

std::vector<std::uint8_t> writeExp(const VLMDesign& design) {
    ByteWriter out(pairSize * design.stitches().size());
    writeEscapedMoves(out, design, escapedSize);
    return out.take();
}

bool exportExpDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                               const ExportOptions& options) noexcept {
    return operation(error, [&] { return saveWithoutColors(design, url, writeExp(design), "EXP", options, error); });
}

}  // namespace velamo
