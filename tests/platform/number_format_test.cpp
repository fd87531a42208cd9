#include "velamo/platform/text/number_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace velamo {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct FormatRow {
    const char* name;
    const char* pattern;
    const char* locale;
    double value;
    const char* text;
};
class PatternFormat : public testing::TestWithParam<FormatRow> {};
TEST_P(PatternFormat, GivesTheRow) {
    const FormatRow& row = GetParam();
    EXPECT_EQ(PatternNumberFormatter(row.pattern, row.locale).format(row.value), row.text);
}

INSTANTIATE_TEST_SUITE_P(Rows, PatternFormat,
                         testing::Values(FormatRow{"OneDecimal", "#,##0.0", "en_US", 12.34, "12.3"},
                                         FormatRow{"Grouping", "#,##0.0", "en_US", 1234567.5, "1,234,567.5"},
                                         FormatRow{"GroupingWithoutALocale", "#,##0.0", "en_US_POSIX", 1234.5,
                                                   "1,234.5"},
                                         FormatRow{"German", "#,##0.0", "de_DE", 1234.5, "1.234,5"},
                                         FormatRow{"French", "#,##0.0", "fr_FR", 1234.5, "1\u202F234,5"},
                                         FormatRow{"SpanishGroupsFourDigitsToo", "#,##0.0", "es_ES", 1234.5, "1.234,5"},
                                         FormatRow{"SwedishMinus", "#,##0.0", "sv_SE", -1.5, "\u22121,5"},
                                         FormatRow{"Negative", "#,##0.00", "en_US", -1234.567, "-1,234.57"},
                                         FormatRow{"HalfToEvenBelow", "#,##0.0", "en_US", 12.25, "12.2"},
                                         FormatRow{"HalfToEvenAbove", "#,##0.0", "en_US", 12.75, "12.8"},
                                         FormatRow{"LanguageAlone", "#,##0.0", "de", 1.5, "1,5"},
                                         FormatRow{"Large", "#,##0.0", "en_US", 1e15, "1,000,000,000,000,000.0"},
                                         FormatRow{"Infinite", "#,##0.0", "en_US", -infinity, "-\u221E"},
                                         FormatRow{"NotANumber", "#,##0.0", "en_US", std::nan(""), "NaN"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PatternFormat, RefusesWhatIsNoPattern) {
    EXPECT_THROW(PatternNumberFormatter("0.0.0'", "en_US"), std::invalid_argument);
}

struct DigitsRow {
    const char* name;
    const char* locale;
    const char* number;
    const char* text;
};
class Digits : public testing::TestWithParam<DigitsRow> {};
TEST_P(Digits, AreThoseOfTheLocale) {
    EXPECT_EQ(LocaleDigits(GetParam().locale).writing(GetParam().number), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Rows, Digits,
                         testing::Values(DigitsRow{"English", "en_US", "1 15/32\"", "1 15/32\""},
                                         DigitsRow{"OfMachines", "en_US_POSIX", "0123456789", "0123456789"},
                                         DigitsRow{"Egypt", "ar_EG", "0123456789",
                                                   "\u0660\u0661\u0662\u0663\u0664\u0665\u0666\u0667\u0668\u0669"},
                                         DigitsRow{"Persian", "fa_IR", "-10.5", "-\u06F1\u06F0.\u06F5"},
                                         DigitsRow{"Unknown", "xx_YY", "12", "12"}),
                         [](const auto& row) { return std::string(row.param.name); });

struct ScanRow {
    const char* name;
    const char* locale;
    const char* text;
    std::optional<double> number;
};
class NumberScan : public testing::TestWithParam<ScanRow> {};
TEST_P(NumberScan, GivesTheRow) {
    EXPECT_EQ(scanNumber(GetParam().text, numberMarksOf(GetParam().locale)), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NumberScan,
    testing::Values(
        ScanRow{"Whole", "en_US", "12", 12}, ScanRow{"TrailingText", "en_US", "12.5 mm", 12.5},
        ScanRow{"LeadingWhiteSpace", "en_US", " \t\n\u00A012.5", 12.5}, ScanRow{"Negative", "en_US", "-0.25", -0.25},
        ScanRow{"Plus", "en_US", "+3", 3}, ScanRow{"MinusSign", "en_US", "\u22121.5", -1.5},
        ScanRow{"SwedishMinus", "sv_SE", "\u22121,5", -1.5}, ScanRow{"HyphenInSwedish", "sv_SE", "-1,5", -1.5},
        ScanRow{"German", "de_DE", "12,5 mm", 12.5}, ScanRow{"PointInGerman", "de_DE", "12.5 mm", 12},
        ScanRow{"CommaInEnglish", "en_US", "12,5", 12}, ScanRow{"Groups", "en_US", "1,234,567.5 mm", 1234567.5},
        ScanRow{"GermanGroups", "de_DE", "1.234,5 mm", 1234.5},
        ScanRow{"FrenchGroups", "fr_FR", "1\u202F234,5 mm", 1234.5}, ScanRow{"GroupTooLong", "en_US", "1,2345", 1},
        ScanRow{"GroupTooShort", "en_US", "1,234,56", 1234}, ScanRow{"LeadingGroupTooLong", "en_US", "1234,567", 1234},
        ScanRow{"FractionAlone", "en_US", ".5", 0.5}, ScanRow{"NoFractionDigits", "en_US", "5.", 5},
        ScanRow{"MarkAlone", "en_US", ".", std::nullopt}, ScanRow{"NegativeMarkAlone", "en_US", "-.", std::nullopt},
        ScanRow{"SignAlone", "en_US", "-", std::nullopt}, ScanRow{"BlankAfterSign", "en_US", "- 5", std::nullopt},
        ScanRow{"Nothing", "en_US", "", std::nullopt}, ScanRow{"WhiteSpaceAlone", "en_US", "  ", std::nullopt},
        ScanRow{"Words", "en_US", "mm 12", std::nullopt}, ScanRow{"Exponent", "en_US", "1.5e2x", 150},
        ScanRow{"NegativeExponent", "en_US", "15E-1", 1.5}, ScanRow{"NoExponentDigits", "en_US", "2e", 2},
        ScanRow{"SignedExponentWithoutDigits", "en_US", "2e+", 2}, ScanRow{"TooLarge", "en_US", "-1e999", -infinity},
        ScanRow{"TooSmall", "en_US", "1e-999", 0}, ScanRow{"NoWordsForInfinity", "en_US", "inf", std::nullopt},
        ScanRow{"NoHexadecimal", "en_US", "0x10", 0}, ScanRow{"ArabicDigits", "en_US", "\u0661\u0662.\u0665", 12.5},
        ScanRow{"WrongBytes", "en_US", "1\xFF", 1}, ScanRow{"OnlyWrongBytes", "en_US", "\xFF\xC3", std::nullopt}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(NumberScan, ReadsNoGroupsWithoutAGroupingMark) {
    EXPECT_EQ(scanNumber("1,234.5", NumberMarks{}), 1);
}

TEST(NumberScan, ReadsWhatTheFormatterWrites) {
    for (const char* locale :
         {"en_US", "de_DE", "de_CH", "fr_FR", "sv_SE", "es_ES", "hi_IN", "ar_EG", "fa_IR", "en_US_POSIX"}) {
        for (const double value : {0.0, 0.5, -1.5, 999.5, 1000.5, -1234567.5}) {
            const std::string text = PatternNumberFormatter("#,##0.0", locale).format(value) + " mm";
            EXPECT_EQ(scanNumber(text, numberMarksOf(locale)), value) << locale << ' ' << text;
        }
    }
}

TEST(PlainFormat, ReadsWholeTextsOnly) {
    const PlainNumberFormatter formatter("en_US");
    EXPECT_EQ(formatter.parse("12.5"), 12.5);
    EXPECT_EQ(formatter.parse(" -3\u00A0"), -3);
    EXPECT_EQ(formatter.parse("2\""), std::nullopt);
    EXPECT_EQ(formatter.parse("2 in"), std::nullopt);
    EXPECT_EQ(formatter.parse("1 2"), std::nullopt);
    EXPECT_EQ(formatter.parse("12,5"), std::nullopt);
    EXPECT_EQ(formatter.parse(""), std::nullopt);
    EXPECT_EQ(PlainNumberFormatter("de_DE").parse("12,5"), 12.5);
}

TEST(WhiteSpace, GoesAtBothEnds) {
    EXPECT_EQ(withoutWhiteSpaceAround(" \t\u00A0a b\u2003\n"), "a b");
    EXPECT_EQ(withoutWhiteSpaceAround(" \n "), "");
    EXPECT_EQ(withoutWhiteSpaceAround(""), "");
    EXPECT_EQ(withoutWhiteSpaceAround("\x80 a \xC2"), "\x80 a \xC2");
}

}  // namespace
}  // namespace velamo
