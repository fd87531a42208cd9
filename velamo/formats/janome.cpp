#include "velamo/formats/janome.h"

#include <algorithm>
#include <array>
#include <map>

#include "velamo/formats/byte_moves.h"
#include "velamo/model/thread_codes.h"

namespace velamo {
namespace {

constexpr std::uint8_t escape = 0x80;
constexpr std::size_t pairSize = 2;
constexpr std::size_t escapedSize = 4;
constexpr const char* palette = "Janome";
constexpr const char* usualKey = "220";

/// What stands behind an escape's second byte.
struct Escaped {
    bool isEnd = false;
    bool hasMove = false;  // two more bytes
    bool moves = false;    // and they count
    bool isJump = false;
    bool isColorChange = false;
};
using EscapeTable = std::array<Escaped, 256>;

constexpr Escaped jump{.hasMove = true, .moves = true, .isJump = true};

constexpr EscapeTable jefEscapes = [] {
    EscapeTable table{};
    table[0x01] = {.hasMove = true, .moves = true, .isColorChange = true};
    table[0x02] = jump;
    table[0x04] = jump;
    table[0x10] = {.isEnd = true};
    return table;
}();

constexpr EscapeTable sewEscapes = [] {
    EscapeTable table{};
    table[0x01] = {.hasMove = true, .isColorChange = true};
    table[0x02] = jump;
    table[0x10] = {.isEnd = true};
    return table;
}();

}  // namespace

std::size_t readJanomeStitches(VLMDesign& design, std::span<const std::uint8_t> stream, JanomeDialect dialect) {
    const EscapeTable& escapes = dialect == JanomeDialect::sew ? sewEscapes : jefEscapes;
    StitchSink sink(design, stream.size() / pairSize);
    std::size_t colorChanges = 0;
    // Even an escape of two bytes is looked at only where four are left.
    while ((stream = appendBytePairs(sink, stream, escape)).size() >= escapedSize) {
        const Escaped escaped = escapes[stream[1]];
        if (escaped.isEnd) break;
        sink.append(escaped.moves ? signedByte(stream[2]) : 0, escaped.moves ? signedByte(stream[3]) : 0,
                    escaped.isJump, escaped.isColorChange);
        colorChanges += escaped.isColorChange ? 1 : 0;
        stream = stream.subspan(escaped.hasMove ? escapedSize : pairSize);
    }
    return colorChanges;
}

VLMThread janomeThread(std::int64_t index) {
    const auto code = janomeCodeOfIndex(index);
    return VLMThread::initWithKeyofPalette(code ? Text(*code) : Text(), palette);
}

VLMThread janomeThreadOrUsual(std::int64_t index) {
    const VLMThread thread = janomeThread(index);
    return thread.paletteName() == "" ? VLMThread::initWithKeyofPalette(usualKey, palette) : thread;
}

bool passesSizeTest(std::int32_t threads, std::uint32_t sizeEach, std::uint32_t sizeBesides,
                    std::size_t fileSize) noexcept {
    const auto wanted = static_cast<std::int32_t>(static_cast<std::uint32_t>(threads) * sizeEach + sizeBesides);
    return wanted < 0 || fileSize >= static_cast<std::size_t>(wanted);
}

bool isStitchOffset(std::int32_t offset, std::size_t fileSize) noexcept {
    return offset >= 0 && fileSize >= static_cast<std::size_t>(offset) + escapedSize;
}

bool readJanomeThreads(VLMDesign& design, std::span<const std::uint8_t> file, std::int64_t offset,
                       std::int32_t threads) {
    constexpr std::size_t entrySize = 4;
    const std::size_t tableSize = static_cast<std::size_t>(std::max(threads, 0)) * entrySize;
    if (tableSize == 0) return true;
    ByteReader tables(file, offset);
    ByteReader indices(tables.take(tableSize));
    ByteReader tensions(tables.take(tableSize));
    if (!tables.ok()) return false;
    // Threads of one index share their texts; all indices that stand for none are alike.
    std::map<Text, VLMThread> known;
    for (std::int32_t i = 0; i < threads; ++i) {
        const std::int32_t index = indices.i32();
        const auto code = janomeCodeOfIndex(index);
        const auto [thread, isNew] = known.try_emplace(code ? Text(*code) : Text());
        if (isNew) thread->second = janomeThreadOrUsual(index);
        design.threads().push_back(thread->second);
        design.threads().back().setTension(tensions.i32());
    }
    return true;
}

}  // namespace velamo
