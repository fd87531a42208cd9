#include "velamo/measure/value_transformer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <system_error>

#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"

namespace velamo {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

VLMValueTransformer transformerFor(std::int32_t unit, const std::string& locale = "en_US") {
    return {locale, [unit] { return unit; }};
}

struct ForwardRow {
    const char* name;
    std::int32_t unit;
    TransformableValue value;
    Text text;
    const char* locale = "en_US";
};
class Forward : public testing::TestWithParam<ForwardRow> {};
TEST_P(Forward, GivesTheRow) {
    const ForwardRow& row = GetParam();
    EXPECT_EQ(transformerFor(row.unit, row.locale).transformedValue(row.value), row.text);
}

const auto nameOfRow = [](const auto& row) { return std::string(row.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Millimetres, Forward,
    testing::Values(
        ForwardRow{"OneDecimal", 0, 12.34, "12.3 mm"}, ForwardRow{"Grouping", 0, 1234.5, "1,234.5 mm"},
        ForwardRow{"German", 0, 1234.5, "1.234,5 mm", "de_DE"},
        ForwardRow{"NoLocale", 0, 1234.5, "1,234.5 mm", "en_US_POSIX"},
        ForwardRow{"HalfToEvenBelow", 0, 12.25, "12.2 mm"}, ForwardRow{"HalfToEvenAbove", 0, 12.75, "12.8 mm"},
        ForwardRow{"HalfOfASingleIsNoHalf", 0, 0.35, "0.3 mm"}, ForwardRow{"Negative", 0, -3.14, "-3.1 mm"},
        ForwardRow{"NegativeSwedish", 0, -3.14, "\u22123,1 mm", "sv_SE"}, ForwardRow{"Zero", 0, 0, "0.0 mm"},
        ForwardRow{"WholeNumber", 0, 12, "12.0 mm"}, ForwardRow{"SinglePrecision", 0, 12.3F, "12.3 mm"},
        ForwardRow{"Boolean", 0, true, "1.0 mm"},
        ForwardRow{"LargestUnsigned", 0, std::numeric_limits<std::uint64_t>::max(), "18,446,744,073,709,552,000.0 mm"},
        ForwardRow{"OtherUnit", 3, 12.34, "12.3 mm"}, ForwardRow{"NegativeUnit", -1, 12.34, "12.3 mm"},
        ForwardRow{"Infinite", 0, infinity, "\u221E mm"}, ForwardRow{"BeyondSinglePrecision", 0, -1e300, "-\u221E mm"},
        ForwardRow{"NotANumber", 0, std::nan(""), "NaN mm"}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    DecimalInches, Forward,
    testing::Values(ForwardRow{"OneInch", 1, 25.4, "1.00\""}, ForwardRow{"German", 1, 12.7, "0,50\"", "de_DE"},
                    ForwardRow{"Grouping", 1, 25400.0, "1,000.00\""}, ForwardRow{"Negative", 1, -25.4, "-1.00\""},
                    ForwardRow{"Rounded", 1, 12.34, "0.49\""}, ForwardRow{"Zero", 1, 0.0, "0.00\""},
                    ForwardRow{"Infinite", 1, infinity, "\u221E\""}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    FractionalInches, Forward,
    testing::Values(
        ForwardRow{"Eighth", 2, 3.175, "1/8\""}, ForwardRow{"OneInch", 2, 25.4, "1\""},
        ForwardRow{"CutThirtySeconds", 2, 38.1, "1 15/32\""}, ForwardRow{"Half", 2, 12.7, "1/2\""},
        ForwardRow{"NegativeHalf", 2, -12.7, "-1/2\""}, ForwardRow{"Zero", 2, 0, "0\""},
        ForwardRow{"NegativeZero", 2, -0.0, "0\""}, ForwardRow{"BelowAThirtySecond", 2, 0.5, "\""},
        ForwardRow{"NegativeBelowAThirtySecond", 2, -0.5, "\""}, ForwardRow{"Thirteen32nds", 2, 10.32, "13/32\""},
        ForwardRow{"WholeWithoutAFull32nd", 2, 25.8, "1\""}, ForwardRow{"Negative", 2, -50.8 - 6.35, "-2 1/4\""},
        ForwardRow{"ThirtyOne32nds", 2, 25.0, "31/32\""},
        ForwardRow{"NoGroupingInWholes", 2, 25.4 * 2048, "2048\"", "de_DE"},
        ForwardRow{"BeyondAnInteger", 2, 1e30, "2147483647\""}, ForwardRow{"BelowAnInteger", 2, -1e30, "-2147483648\""},
        ForwardRow{"Infinite", 2, -infinity, "-\u221E\""}, ForwardRow{"NotANumber", 2, std::nan(""), "NaN\""}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(KindsOfValue, Forward,
                         testing::Values(ForwardRow{"Nothing", 0, {}, std::nullopt},
                                         ForwardRow{"Nullopt", 2, std::nullopt, std::nullopt},
                                         ForwardRow{"Text", 0, "12.34 mm", "12.3 mm"},
                                         ForwardRow{"TextWithoutANumber", 0, "wide", "0.0 mm"},
                                         ForwardRow{"EmptyText", 0, "", "0.0 mm"},
                                         ForwardRow{"TextIsReadWithAPoint", 0, "12.34", "12,3 mm", "de_DE"},
                                         ForwardRow{"TextIsReadWithoutGroups", 0, "1,234.5", "1.0 mm"}),
                         nameOfRow);

std::string refusalOf(const TransformableValue& value) {
    try {
        return "accepted: " + transformerFor(0).transformedValue(value).value_or("nothing");
    } catch (const InternalInconsistencyException& exception) {
        return exception.what();
    }
}

TEST(ValueTransformer, RefusesValuesWithoutANumber) {
    EXPECT_EQ(refusalOf(StyledText{"12"}), "Value (velamo::StyledText) does not respond to -floatValue.");
    EXPECT_EQ(refusalOf(std::any(MeasurementUnit::millimetres)),
              "Value (velamo::MeasurementUnit) does not respond to -floatValue.");
    EXPECT_EQ(refusalOf(12), "accepted: 12.0 mm");
}

TEST(ValueTransformer, TellsItsKind) {
    EXPECT_EQ(VLMValueTransformer::transformedValueClass(), typeid(std::string));
    EXPECT_TRUE(VLMValueTransformer::allowsReverseTransformation());
}

struct ReverseRow {
    const char* name;
    std::int32_t unit;
    const char* text;
    double millimetres;
    const char* locale = "en_US";
};
class Reverse : public testing::TestWithParam<ReverseRow> {};
TEST_P(Reverse, GivesTheRow) {
    const ReverseRow& row = GetParam();
    const auto number = transformerFor(row.unit, row.locale).reverseTransformedValue(row.text).number();
    ASSERT_TRUE(number.has_value());
    if (std::isnan(row.millimetres)) {
        EXPECT_TRUE(std::isnan(*number)) << *number;
    } else {
        EXPECT_EQ(*number, row.millimetres);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Reverse,
    testing::Values(ReverseRow{"Millimetres", 0, "12.5", 12.5}, ReverseRow{"Inches", 1, "2", 50.8},
                    ReverseRow{"FractionalInches", 2, "2", 50.8}, ReverseRow{"OtherUnit", 3, "2", 2},
                    ReverseRow{"NegativeUnit", -1, "2", 2}, ReverseRow{"MmNamed", 1, "12 mm", 12},
                    ReverseRow{"MmNamedWithoutABlank", 2, "12mm", 12}, ReverseRow{"InNamed", 0, "2 in", 50.8},
                    ReverseRow{"InchMark", 0, "2\"", 50.8}, ReverseRow{"MmBeforeIn", 0, "2 in mm", 2},
                    ReverseRow{"UpperCaseNamesNothing", 0, "2 IN", 2}, ReverseRow{"Empty", 1, "", 0},
                    ReverseRow{"WhiteSpace", 1, "   ", 0}, ReverseRow{"Words", 1, "wide", 0},
                    ReverseRow{"Negative", 0, "-3.5 mm", -3.5}, ReverseRow{"German", 0, "12,5 mm", 12.5, "de_DE"},
                    ReverseRow{"GermanGroups", 0, "1.234,5 mm", 1234.5, "de_DE"},
                    ReverseRow{"Groups", 0, "1,234.5 mm", 1234.5}, ReverseRow{"CommaInEnglish", 0, "12,5 mm", 12},
                    ReverseRow{"TooLarge", 1, "1e999", infinity}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    Fractions, Reverse,
    testing::Values(
        ReverseRow{"WholeAndFraction", 2, "1 1/2", 1.5 * 25.4}, ReverseRow{"Negative", 2, "-1 1/2", -1.5 * 25.4},
        ReverseRow{"FractionAlone", 2, "1/2", 12.7}, ReverseRow{"NegativeFractionAlone", 2, "-1/2", -12.7},
        ReverseRow{"MillimetresByUnit", 0, "1 1/2", 1.5}, ReverseRow{"NoDenominator", 0, "3/", 3},
        ReverseRow{"NoDenominatorDecimalInches", 1, "3/", 3 * 25.4},
        ReverseRow{"NoDenominatorFractionalInches", 2, "3/", 3 * 25.4}, ReverseRow{"SlashAlone", 1, "/", 0},
        ReverseRow{"NoNumerator", 2, "/2", 0}, ReverseRow{"NoWholeNumberText", 0, "x 1/2", 0.5},
        ReverseRow{"NoNumeratorText", 0, "1 x/2", 1}, ReverseRow{"WhiteSpaceAround", 2, "  1 1/2", 1.5 * 25.4},
        ReverseRow{"BlanksAroundTheSlash", 2, "1 1 / 2", 1.5 * 25.4},
        ReverseRow{"TwoBlanksHideTheNumerator", 0, "1  1/2", 1}, ReverseRow{"FurtherPartsDoNotCount", 0, "1/2/0", 0.5},
        ReverseRow{"FurtherPiecesDoNotCount", 0, "1 1 9/2", 1.5}, ReverseRow{"WholeIsCut", 0, "1.9 1/2", 1.5},
        ReverseRow{"NegativeZeroIsNotNegative", 0, "-0 1/2", 0.5}, ReverseRow{"DecimalNumerator", 0, "1.5/2", 0.75},
        ReverseRow{"GermanNumerator", 0, "1,5/2", 0.75, "de_DE"}, ReverseRow{"ZeroDenominator", 0, "1/0", infinity},
        ReverseRow{"NegativeOverZero", 0, "-1 1/0", -infinity}, ReverseRow{"ZeroOverZero", 0, "0/0", std::nan("")},
        ReverseRow{"InchMarkInDenominator", 2, "1 1/2\"", infinity},
        ReverseRow{"UnitInDenominator", 0, "1/2 mm", infinity}, ReverseRow{"BlankDenominator", 0, "3/ ", infinity},
        ReverseRow{"HugeWhole", 0, "1e99 1/2", 2147483647.5}),
    nameOfRow);

TEST(ValueTransformer, ReadsStyledTextAsItsPlainString) {
    EXPECT_EQ(transformerFor(2).reverseTransformedValue(StyledText{"1 1/2"}).number(), 1.5 * 25.4);
    EXPECT_EQ(transformerFor(2).reverseTransformedValue(StyledText{}).number(), 0);
}

TEST(ValueTransformer, ReadsNothingAsZero) {
    EXPECT_EQ(transformerFor(1).reverseTransformedValue({}).number(), 0);
}

TEST(ValueTransformer, GivesBackUnchangedWhatIsNoText) {
    EXPECT_EQ(transformerFor(1).reverseTransformedValue(2).number(), 2);
    const auto other = transformerFor(1).reverseTransformedValue(std::any(MeasurementUnit::decimalInches));
    ASSERT_NE(other.other(), nullptr);
    EXPECT_EQ(std::any_cast<MeasurementUnit>(*other.other()), MeasurementUnit::decimalInches);
}

TEST(ValueTransformer, ReadsBackWhatItWrites) {
    for (const char* locale : {"en_US", "de_DE", "fr_FR", "sv_SE"}) {
        for (const double millimetres : {0.0, 12.5, -1234.5}) {
            const auto transformer = transformerFor(0, locale);
            const std::string text = transformer.transformedValue(millimetres).value();
            EXPECT_EQ(transformer.reverseTransformedValue(text).number(), millimetres) << text;
        }
    }
}

TEST(ValueTransformer, AsksForTheUnitOnEveryCall) {
    std::int32_t unit = 0;
    const VLMValueTransformer transformer("en_US", [&unit] { return unit; });
    EXPECT_EQ(transformer.transformedValue(25.4), "25.4 mm");
    EXPECT_EQ(transformer.reverseTransformedValue("1").number(), 1);
    unit = 2;
    EXPECT_EQ(transformer.transformedValue(25.4), "1\"");
    EXPECT_EQ(transformer.reverseTransformedValue("1").number(), 25.4);
}

TEST(ValueTransformer, TakesAFixedUnit) {
    EXPECT_EQ(VLMValueTransformer(MeasurementUnit::fractionalInches).transformedValue(25.4), "1\"");
}

/// A home folder with the editor's preference file, as long as the test lives.
class Preferences : public testing::Test {
protected:
    [[nodiscard]] std::filesystem::path file() const {
        return home_.path() / "Library/Preferences/de.velamo.app.plist";
    }
    void write(const std::string& text) const { home_.write(file(), text); }
    void writeUnit(const std::string& value) const {
        write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict><key>MeasurementUnit</key>" +
              value + "</dict></plist>");
    }

private:
    const test::TemporaryFolder home_;
    const test::Variable variable_{"HOME", home_.path().native()};
};

TEST_F(Preferences, LieInTheHomeFolder) {
    EXPECT_EQ(preferenceFile(), file());
}

TEST_F(Preferences, DecideTheUnitOfEveryCall) {
    const VLMValueTransformer transformer;
    EXPECT_EQ(transformer.transformedValue(25.4), "25.4 mm");
    writeUnit("<integer>1</integer>");
    EXPECT_EQ(transformer.transformedValue(25.4), "1.00\"");
    EXPECT_EQ(transformer.reverseTransformedValue("1").number(), 25.4);
    writeUnit("<integer>2</integer>");
    EXPECT_EQ(transformer.transformedValue(25.4), "1\"");
    std::filesystem::remove(file());
    EXPECT_EQ(transformer.transformedValue(25.4), "25.4 mm");
    EXPECT_EQ(transformer.reverseTransformedValue("1").number(), 1);
}

TEST_F(Preferences, GiveTheirUnitAsAnInteger) {
    writeUnit("<string>2</string>");
    EXPECT_EQ(measurementUnitOfUser(), 2);
    writeUnit("<real>1.9</real>");
    EXPECT_EQ(measurementUnitOfUser(), 1);
    writeUnit("<true/>");
    EXPECT_EQ(measurementUnitOfUser(), 1);
    writeUnit("<integer>-7</integer>");
    EXPECT_EQ(measurementUnitOfUser(), -7);
}

TEST_F(Preferences, MeanMillimetresWhereTheyHoldNoUnit) {
    writeUnit("<array/>");
    EXPECT_EQ(measurementUnitOfUser(), 0);
    writeUnit("<string>wide</string>");
    EXPECT_EQ(measurementUnitOfUser(), 0);
    write("<?xml version=\"1.0\"?><plist version=\"1.0\"><array><integer>1</integer></array></plist>");
    EXPECT_EQ(measurementUnitOfUser(), 0);
    write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Measure");
    EXPECT_EQ(measurementUnitOfUser(), 0);
    write("");
    EXPECT_EQ(measurementUnitOfUser(), 0);
}

TEST_F(Preferences, ThatCannotBeReadThisTimeAreAFailure) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    writeUnit("<integer>1</integer>");
    std::filesystem::remove(file());
    std::filesystem::create_symlink(test::unreadableFile, file());
    EXPECT_THROW(static_cast<void>(measurementUnitOfUser()), std::system_error);
}

TEST_F(Preferences, OfAnotherFileServeAsWell) {
    writeUnit("<integer>1</integer>");
    EXPECT_EQ(measurementUnitIn(file()), 1);
    EXPECT_EQ(measurementUnitIn(file().parent_path()), 0);
    const auto path = file();
    const VLMValueTransformer transformer("de_DE", [path] { return measurementUnitIn(path); });
    EXPECT_EQ(transformer.transformedValue(12.7), "0,50\"");
}

}  // namespace
}  // namespace velamo
