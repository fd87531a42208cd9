// What the results rest on and a compiler or its options may take away.
#include <gtest/gtest.h>

namespace velamo {
namespace {

struct Pair {
    double one;
    double other;
};

[[gnu::noinline]] Pair roundedToSingle(double one, double other) {
    return {static_cast<double>(static_cast<float>(one)), static_cast<double>(static_cast<float>(other))};
}

TEST(Arithmetic, RoundsNeighboursToSinglePrecision) {
    const Pair rounded = roundedToSingle(0.1, 0.7);
    EXPECT_EQ(rounded.one, 0.100000001490116119384765625);
    EXPECT_EQ(rounded.other, 0.699999988079071044921875);
}

[[gnu::noinline]] float productAndSum(float one, float other, float addend) {
    return one * other + addend;
}

/// With one rounding the square of 1 + 2^-12 keeps its last digit, which two roundings lose.
TEST(Arithmetic, RoundsProductsBeforeTheyAreAdded) {
    constexpr float factor = 1.0F + 1.0F / 4096.0F;
    EXPECT_EQ(productAndSum(factor, factor, -1.0F), 1.0F / 2048.0F);
}

}  // namespace
}  // namespace velamo
