#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace velamo {

/// Reads the bytes of a file held in memory, and cannot leave them. Numbers are little-endian (`u16be` and its like:
/// big). A read that does not fit yields zero (or no bytes), drops the rest and makes ok() false from then on, so a
/// header is read field by field and asked about once. Views the bytes; the caller keeps them alive.
class ByteReader {
public:
    /// Starts at `offset`; one that is negative or past the end leaves nothing to read.
    explicit ByteReader(std::span<const std::uint8_t> bytes, std::int64_t offset = 0) noexcept : rest_(bytes) {
        skip(offset);
    }

    [[nodiscard]] bool ok() const noexcept { return ok_; }
    [[nodiscard]] std::size_t remaining() const noexcept { return rest_.size(); }
    [[nodiscard]] std::span<const std::uint8_t> rest() const noexcept { return rest_; }

    /// The next `count` bytes, or none when fewer are left.
    std::span<const std::uint8_t> take(std::size_t count) noexcept {
        ok_ = ok_ && count <= rest_.size();
        const auto taken = rest_.first(ok_ ? count : 0);
        rest_ = rest_.last(ok_ ? rest_.size() - count : 0);
        return taken;
    }
    /// Passes over `count` bytes; a negative count does not fit.
    void skip(std::int64_t count) noexcept { take(count < 0 ? SIZE_MAX : static_cast<std::size_t>(count)); }

    std::uint8_t u8() noexcept { return static_cast<std::uint8_t>(number(1)); }
    std::int8_t i8() noexcept { return static_cast<std::int8_t>(number(1)); }
    std::uint16_t u16() noexcept { return static_cast<std::uint16_t>(number(2)); }
    std::int16_t i16() noexcept { return static_cast<std::int16_t>(number(2)); }
    std::uint32_t u24() noexcept { return number(3); }
    std::int32_t i32() noexcept { return static_cast<std::int32_t>(number(4)); }
    std::uint16_t u16be() noexcept { return static_cast<std::uint16_t>(numberBe(2)); }
    std::int16_t i16be() noexcept { return static_cast<std::int16_t>(numberBe(2)); }
    std::int32_t i32be() noexcept { return static_cast<std::int32_t>(numberBe(4)); }

private:
    std::uint32_t number(std::size_t width) noexcept {  // 1 to 4 bytes
        std::uint32_t value = 0;
        const auto bytes = take(width);
        for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
        return value;
    }
    std::uint32_t numberBe(std::size_t width) noexcept {
        std::uint32_t value = 0;
        for (const std::uint8_t byte : take(width)) value = value << 8 | byte;
        return value;
    }

    std::span<const std::uint8_t> rest_;
    bool ok_ = true;
};

/// A byte as the signed number of eight bits that moves are made of.
[[nodiscard]] constexpr float signedByte(std::uint8_t byte) noexcept {
    return static_cast<std::int8_t>(byte);
}

}  // namespace velamo
