#include "velamo/platform/graphics/deflater.h"

#include <new>

namespace velamo {
namespace {

constexpr std::size_t pieceSize = 1 << 16;
/// Lines drawn one on the other repeat each other closely: searching farther takes twenty times as long for nothing.
constexpr int level = 5;

}  // namespace

Deflater::Deflater(const ByteSink& sink) : sink_(sink), room_(pieceSize) {
    if (deflateInit(&stream_, level) != Z_OK) throw std::bad_alloc();
}

bool Deflater::run(std::span<const std::uint8_t> bytes, int flush) {
    stream_.next_in = const_cast<Bytef*>(bytes.data());  // which is only read
    stream_.avail_in = static_cast<uInt>(bytes.size());
    do {
        stream_.next_out = room_.data();
        stream_.avail_out = static_cast<uInt>(room_.size());
        deflate(&stream_, flush);
        const std::size_t made = room_.size() - stream_.avail_out;
        bytesMade_ += made;
        if (made > 0 && !sink_({room_.data(), made})) return false;
    } while (stream_.avail_out == 0);
    return true;
}

}  // namespace velamo
