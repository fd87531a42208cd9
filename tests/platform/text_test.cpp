#include "velamo/platform/text/text.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/bytes.h"

namespace velamo {
namespace {

struct PatternRow {
    const char* name;
    std::string pattern;
    std::vector<PatternArgument> arguments;
    std::string text;
};
class Patterns : public testing::TestWithParam<PatternRow> {};
TEST_P(Patterns, AreFilled) {
    EXPECT_EQ(fillPattern(GetParam().pattern, GetParam().arguments), GetParam().text);
}

const double infinite = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Rows, Patterns,
    testing::Values(
        PatternRow{"Text", "<%@>", {Text("rose")}, "<rose>"}, PatternRow{"AbsentText", "<%@>", {Text()}, "<(null)>"},
        PatternRow{"WholeNumbers", "%i %d", {std::int64_t{-7}, std::int64_t{8}}, "-7 8"},
        PatternRow{"RealNumber", "%1.2f", {1.005}, "1.00"}, PatternRow{"RealNumberHalfway", "%1.1f", {0.25}, "0.2"},
        PatternRow{"RealNumberWithoutPlaces", "%f", {0.5}, "0.500000"},
        PatternRow{"RealNumberAsWhole", "%i", {204.0}, "204"},
        PatternRow{"WholeNumberAsReal", "%1.1f", {std::int64_t{3}}, "3.0"},
        PatternRow{"NumberInPlaceOfText", "%@", {std::int64_t{3}}, "3"},
        PatternRow{"Width", "[%6.1f]", {2.5}, "[   2.5]"}, PatternRow{"PercentSign", "100%%", {}, "100%"},
        PatternRow{"ChangedOrder", "%2$@ %1$@", {Text("a"), Text("b")}, "b a"},
        PatternRow{"MissingArgumentStays", "%@ %@", {Text("a")}, "a %@"},
        PatternRow{"NumberedArgumentThatIsNotThere", "%9$@", {Text("a")}, "%9$@"},
        PatternRow{"UnknownPlaceStays", "%x %s", {std::int64_t{1}}, "%x %s"},
        PatternRow{"PercentSignAtTheEnd", "5 %", {std::int64_t{1}}, "5 %"},
        PatternRow{"UnfinishedPlaceAtTheEnd", "%1.", {1.0}, "%1."},
        PatternRow{"SillyWidthAndPrecision", "%.99999999999999999999f", {0.5}, "0.5" + std::string(59, '0')},
        PatternRow{"NoFiniteNumber", "%1.0f %1.0f %1.0f", {infinite, -infinite, infinite - infinite}, "inf -inf nan"},
        PatternRow{"ArgumentsAreNotPatterns", "%@", {Text("%i %@")}, "%i %@"}),
    [](const auto& row) { return row.param.name; });

TEST(Latin1, BecomesUtf8) {
    EXPECT_EQ(textFromLatin1(test::bytes("Gr", 0xFC, 0xDF, "e")), "Gr\u00FC\u00DFe");
    EXPECT_EQ(textFromLatin1(test::bytes(0x80, 0xFF, 0)), std::string("\u0080\u00FF\0", 5));
    EXPECT_EQ(textFromLatin1({}), "");
}

struct Utf8Row {
    const char* name;
    std::string given;
    std::string valid;
};
class Utf8 : public testing::TestWithParam<Utf8Row> {};
TEST_P(Utf8, IsMadeValid) {
    EXPECT_EQ(validUtf8(GetParam().given), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Utf8,
    testing::Values(Utf8Row{"AllLengthsStay", "a\u00E9\u20AC\U0001F338", "a\u00E9\u20AC\U0001F338"},
                    Utf8Row{"LoneByte", "a\xFF", "a\uFFFD"}, Utf8Row{"ContinuationFirst", "\x80z", "\uFFFDz"},
                    Utf8Row{"CutSequence", "\xE2\x82", "\uFFFD\uFFFD"},
                    Utf8Row{"BrokenSequence", "\xE2(\xA1", "\uFFFD(\uFFFD"},
                    Utf8Row{"OverlongSlash", "\xC0\xAF", "\uFFFD\uFFFD"},
                    Utf8Row{"OverlongOfThreeBytes", "\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
                    Utf8Row{"Surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                    Utf8Row{"PastTheLastCharacter", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
                    Utf8Row{"LastCharacter", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"}),
    [](const auto& row) { return row.param.name; });

struct CountRow {
    const char* name;
    std::int64_t count;
    const char* one;
    const char* many;
    const char* text;
};
class Counts : public testing::TestWithParam<CountRow> {};
TEST_P(Counts, AreSaidWithTheirWord) {
    EXPECT_EQ(counted(GetParam().count, GetParam().one, GetParam().many), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Rows, Counts,
                         testing::Values(CountRow{"None", 0, "stitch", "stitches", "0 stitches"},
                                         CountRow{"One", 1, "stitch", "stitches", "1 stitch"},
                                         CountRow{"Two", 2, "stitch", "stitches", "2 stitches"},
                                         CountRow{"OneDesign", 1, "design", "", "1 design"},
                                         CountRow{"TwoDesigns", 2, "design", "", "2 designs"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
