#include "velamo/formats/whole_moves.h"

#include <gtest/gtest.h>

#include <random>

namespace velamo {
namespace {

constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

TEST(WholeNumbers, AreTruncatedAndStayWithin64Bits) {
    for (const auto& [number, whole] : {std::pair{1.9, std::int64_t{1}},
                                        {-1.9, -1},
                                        {-0.9, 0},
                                        {1e15, 1000000000000000},
                                        {9.3e18, most},
                                        {-9.3e18, least},
                                        {-9223372036854775808.0, least},
                                        {std::numeric_limits<double>::infinity(), most},
                                        {-std::numeric_limits<double>::infinity(), least},
                                        {std::nan(""), 0}})
        EXPECT_EQ(wholeNumber(number), whole) << number;
}

struct Row {
    const char* name;
    std::vector<float> moves;
    std::vector<float> whole;
};
class WholeMovesRow : public testing::TestWithParam<Row> {};
TEST_P(WholeMovesRow, CarryTheirFractions) {
    WholeMoves moves;
    std::vector<float> whole;
    for (const float move : GetParam().moves) whole.push_back(moves.take(move));
    EXPECT_EQ(whole, GetParam().whole);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, WholeMovesRow,
    testing::Values(Row{"Whole", {3, -2, 0}, {3, -2, 0}}, Row{"Thirds", {0.4F, 0.4F, 0.4F}, {0, 0, 1}},
                    Row{"NegativeAreRoundedDown", {-0.5F, 0, 0.5F}, {-1, 0, 1}},
                    Row{"WholeAfterAFraction", {0.5F, 3, 0.5F, 3}, {0, 3, 1, 3}},
                    Row{"FractionsThatVanishBesideALongMove", {0.4F, 1 << 24, 0.6F}, {0, 1 << 24, 0}},
                    Row{"NotFinite", {infinite}, {infinite}}),
    [](const auto& row) { return row.param.name; });

TEST(WholeMoves, AddSinglePrecisionBeforeRounding) {
    // The sums as they are written down, each operation rounded to single precision.
    std::mt19937 random(9);
    std::uniform_real_distribution<float> any(-130, 130);
    WholeMoves moves;
    float carry = 0;
    for (int i = 0; i < 100000; ++i) {
        const float move = i % 3 == 0 ? std::round(any(random)) : any(random);
        const volatile float sum = move + carry;
        const float whole = std::floor(sum);
        const volatile float former = carry + move;
        carry = former - whole;
        ASSERT_EQ(moves.take(move), whole) << i;
    }
}

TEST(WholeMoves, CarryWhatDidNotFit) {
    WholeMoves moves;
    EXPECT_EQ(moves.take(130.25F), 130);
    moves.carry(9);
    EXPECT_EQ(moves.take(0), 9);
    EXPECT_EQ(moves.take(0.75F), 1);
}

TEST(WholePairs, CarryBothFractions) {
    WholePairs moves;
    const auto take = [&moves](float x, float y) {
        const auto move = moves.take(x, y);
        return std::pair(move.x, move.y);
    };
    EXPECT_EQ(take(3, -4), std::pair(std::int64_t{3}, std::int64_t{-4}));
    EXPECT_EQ(take(0.5F, -0.25F), std::pair(std::int64_t{0}, std::int64_t{-1}));
    EXPECT_EQ(take(1, 1), std::pair(std::int64_t{1}, std::int64_t{1}));
    EXPECT_EQ(take(0.5F, 0.25F), std::pair(std::int64_t{1}, std::int64_t{1}));
    EXPECT_EQ(take(3e9F, -3e9F), std::pair(std::int64_t{3000000000}, std::int64_t{-3000000000}));
    EXPECT_EQ(take(infinite, 2), std::pair(most, std::int64_t{2}));
}

TEST(ByteMoves, KeepTheLowerEightBits) {
    WholePairs moves;
    EXPECT_EQ(byteMove(moves.take(-3, 2)), 0x02FDU);
    EXPECT_EQ(byteMove(moves.take(130, -200)), 0x3882U);
    EXPECT_EQ(byteMove(moves.take(-0.5F, 256)), 0x00FFU);
    EXPECT_EQ(byteMove(moves.take(0.5F, infinite)), 0xFF01U);
}

}  // namespace
}  // namespace velamo
