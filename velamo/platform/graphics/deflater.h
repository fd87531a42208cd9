#pragma once

#include <zlib.h>

#include <cstdint>
#include <span>
#include <vector>

#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// Compresses bytes as they come, in zlib's own wrapping.
class Deflater {
public:
    /// The sink has to live as long. May throw std::bad_alloc.
    explicit Deflater(const ByteSink& sink);
    ~Deflater() { deflateEnd(&stream_); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// Returns false when the sink did not take what came of it.
    [[nodiscard]] bool take(std::span<const std::uint8_t> bytes) { return run(bytes, Z_NO_FLUSH); }
    [[nodiscard]] bool finish() { return run({}, Z_FINISH); }
    /// What the sink has got so far.
    [[nodiscard]] std::size_t bytesMade() const noexcept { return bytesMade_; }

private:
    [[nodiscard]] bool run(std::span<const std::uint8_t> bytes, int flush);

    const ByteSink& sink_;
    z_stream stream_{};
    std::vector<std::uint8_t> room_;
    std::size_t bytesMade_ = 0;
};

}  // namespace velamo
