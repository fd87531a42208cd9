#include "velamo/platform/text/plain_number.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <ostream>
#include <random>
#include <string>

#include "tests/support/environment.h"

namespace velamo {
namespace {

struct Row {
    const char* name;
    std::string text;
    double value;
    std::size_t length;
    bool fits = true;
};
class Scanning : public testing::TestWithParam<Row> {};
TEST_P(Scanning, GivesTheRow) {
    const auto scanned = scanDouble(GetParam().text);
    ASSERT_TRUE(scanned);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(scanned->value), std::bit_cast<std::uint64_t>(GetParam().value));
    EXPECT_EQ(scanned->length, GetParam().length);
    EXPECT_EQ(scanned->fits, GetParam().fits);
}
constexpr double infinity = std::numeric_limits<double>::infinity();
INSTANTIATE_TEST_SUITE_P(
    Rows, Scanning,
    testing::Values(Row{"Whole", "12", 12, 2}, Row{"Decimals", "12.5mm", 12.5, 4}, Row{"Minus", "-0.25 ", -0.25, 5},
                    Row{"MinusZero", "-0", -0.0, 2}, Row{"PointFirst", ".5", 0.5, 2}, Row{"PointLast", "5.", 5, 2},
                    Row{"TwoPoints", "1.2.3", 1.2, 3}, Row{"Exponent", "1e3x", 1000, 3},
                    Row{"LargeExponentLetter", "2E+2", 200, 4}, Row{"NegativeExponent", "25e-1", 2.5, 5},
                    Row{"NoExponent", "1e", 1, 1}, Row{"NoExponentDigits", "1e+", 1, 1},
                    Row{"Hexadecimal", "0x1F", 0, 1}, Row{"Comma", "1,5", 1, 1},
                    Row{"Infinity", "-INFINITYx", -infinity, 9}, Row{"ShortInfinity", "infinit", infinity, 3},
                    Row{"Overflow", "1e400", infinity, 5, false}, Row{"Underflow", "-1e-400", -0.0, 7, false},
                    Row{"ZeroWithExponent", "0e-999", 0, 6}, Row{"Subnormal", "5e-324", 5e-324, 6},
                    Row{"Long", std::string(200, '0') + "1." + std::string(200, '0'), 1, 402}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Scanning, KnowsNoNumber) {
    for (const double value : {scanDouble("nan")->value, scanDouble("NaN(a_1)x")->value})
        EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(scanDouble("nan(a_1)x")->length, 8U);
    EXPECT_EQ(scanDouble("nan(a-1)")->length, 3U);
}

TEST(Scanning, RefusesWhatIsNoNumber) {
    for (const char* text : {"", " 1", "+1", "-", "--1", ".", "-.", "e5", ".e5", "x", "in", "\t1", "\u00A01"}) {
        EXPECT_FALSE(scanDouble(text)) << text;
        EXPECT_FALSE(scanFloat(text)) << text;
    }
}

/// By way of a double, this would be the smaller neighbour.
TEST(Scanning, RoundsAFloatOnce) {
    EXPECT_EQ(scanFloat("1.00000017881393432617187499")->value, 1.00000011920928955078125F);
    EXPECT_EQ(scanFloat("1.00000017881393432617187501")->value, 1.0000002384185791015625F);
    EXPECT_FALSE(scanFloat("3.5e38")->fits);
    EXPECT_FALSE(scanFloat("1e-46")->fits);
    EXPECT_EQ(scanFloat("1e-45")->value, std::numeric_limits<float>::denorm_min());
}

TEST(Scanning, ReadsWhatWasPrinted) {
    std::mt19937_64 random(9);
    for (int i = 0; i < 20000; ++i) {
        const auto number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) continue;
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "%.17g", number);
        EXPECT_EQ(plainNumber<double>(text.data()), number);
    }
}

TEST(Scanning, IsThatOfTheCLocaleInEachOne) {
    const test::Variable locale("LC_ALL", "de_DE.UTF-8");
    std::setlocale(LC_ALL, "");
    EXPECT_EQ(plainNumber<double>("1.5"), 1.5);
    EXPECT_EQ(plainNumber<double>("1,5"), std::nullopt);
    std::setlocale(LC_ALL, "C");
}

TEST(PlainNumbers, AreWholeTexts) {
    EXPECT_EQ(plainNumber<int>("-12"), -12);
    for (const char* text : {"", "12 ", " 12", "+12", "12.", "99999999999", "1e3", "x"})
        EXPECT_EQ(plainNumber<int>(text), std::nullopt) << text;
    EXPECT_EQ(plainNumber<float>("0.1"), 0.1F);
    for (const char* text : {"0.1 ", "0.1f", "1e99", ""}) EXPECT_EQ(plainNumber<float>(text), std::nullopt) << text;
}

}  // namespace
}  // namespace velamo
