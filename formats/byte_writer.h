#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace velamo {

/// Puts the bytes of a file together in memory. Numbers are little-endian; of a number that does not fit its bytes the
/// lower bits are kept, which for a negative one is its two's complement.
class VLMByteWriter {
public:
    /// Makes room for `expectedSize` bytes at once. More may come.
    explicit VLMByteWriter(std::size_t expectedSize = 0) : bytes_(expectedSize + widest_) {}

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    void u8(std::int64_t number) { put(static_cast<std::uint64_t>(number), 1); }
    void u16(std::int64_t number) { put(static_cast<std::uint64_t>(number), 2); }
    void u24(std::int64_t number) { put(static_cast<std::uint64_t>(number), 3); }
    void u32(std::int64_t number) { put(static_cast<std::uint64_t>(number), 4); }

    /// The lower `width` bytes of the number, at most 8. A record that is put whole costs little more than one byte.
    void put(std::uint64_t number, std::size_t width) {
        if (bytes_.size() - size_ < widest_) bytes_.resize(bytes_.size() * 2);
        std::uint8_t* const end = bytes_.data() + size_;
        if constexpr (std::endian::native == std::endian::little)
            std::memcpy(end, &number, widest_);
        else
            for (std::size_t i = 0; i < widest_; ++i) end[i] = static_cast<std::uint8_t>(number >> 8 * i);
        size_ += width;
    }
    void text(std::string_view text) {
        for (const char character : text) u8(static_cast<unsigned char>(character));
    }
    void bytes(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes) u8(byte);
    }
    void fill(std::size_t count, std::uint8_t byte) {
        for (; count > 0; --count) u8(byte);
    }

    /// Replaces the bytes at the offset, which are there already.
    void replace(std::size_t offset, std::int64_t number, std::size_t width) noexcept {
        for (std::size_t i = 0; i < width; ++i)
            bytes_[offset + i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(number) >> 8 * i);
    }

    /// The finished file; the writer is used up.
    [[nodiscard]] std::vector<std::uint8_t> take() {
        bytes_.resize(std::exchange(size_, 0));
        return std::move(bytes_);
    }

private:
    static constexpr std::size_t widest_ = 8;

    std::vector<std::uint8_t> bytes_;  // there is always room for the widest number behind `size_`
    std::size_t size_ = 0;
};

}  // namespace velamo
