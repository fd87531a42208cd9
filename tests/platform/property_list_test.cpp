#include "velamo/platform/plist/property_list.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "tests/support/property_lists.h"

namespace velamo {
namespace {

using test::integer;
using test::real;
using test::text;
using Bytes = std::vector<std::uint8_t>;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Data = PropertyList::Data;
using Uid = PropertyList::Uid;
using Other = PropertyList::Other;

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::optional<PropertyList> parsed(std::string_view text) {
    return parsePropertyList(bytesOf(text));
}

std::string asText(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

// The list inside so many arrays.
PropertyList nested(int levels, PropertyList list) {
    for (int i = 0; i < levels; ++i) {
        Array array;
        array.push_back(std::move(list));
        list = PropertyList(std::move(array));
    }
    return list;
}

PropertyList sample() {
    return PropertyList(Array{PropertyList(Dictionary{
                                  {"zeta", text("Gr\u00FCn & <Blau>\r\n\t\U0001F9F5")},
                                  {"alpha", integer(-1)},
                                  {"data", PropertyList(Data{0, 255, 7, 9})},
                                  {"list", PropertyList(Array{PropertyList(true), PropertyList(false), real(0.1)})},
                                  {"reference", PropertyList(Uid{300})},
                                  {"", PropertyList(Dictionary())},
                              }),
                              real(0.5), integer(70000), text(std::string(300, 'a')), PropertyList(Array())});
}

// Values
// ---------------------------------------------------------------------------------------------------------------

struct NumberRow {
    const char* name;
    PropertyList list;
    std::optional<double> number;
    std::optional<std::int64_t> integer;
};
class PropertyListNumber : public testing::TestWithParam<NumberRow> {};
TEST_P(PropertyListNumber, GivesTheRow) {
    EXPECT_EQ(GetParam().list.number(), GetParam().number);
    EXPECT_EQ(GetParam().list.integer(), GetParam().integer);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PropertyListNumber,
    testing::Values(
        NumberRow{"Integer", integer(-5), -5.0, -5}, NumberRow{"Real", real(2.9), 2.9, 2},
        NumberRow{"NegativeRealIsNarrowedTowardZero", real(-2.9), -2.9, -2},
        NumberRow{"True", PropertyList(true), 1.0, 1}, NumberRow{"False", PropertyList(false), 0.0, 0},
        NumberRow{"TextOfDigits", text("42"), 42.0, 42}, NumberRow{"TextWithSpaces", text(" -1.5\n"), -1.5, -1},
        NumberRow{"TextOfAnIntegerThatNoDoubleHolds", text("9007199254740993"), 9007199254740992.0, 9007199254740993},
        NumberRow{"OtherText", text("2 mm"), std::nullopt, std::nullopt},
        NumberRow{"EmptyText", text(""), std::nullopt, std::nullopt},
        NumberRow{"IntegerThatNoDoubleHolds", integer(9007199254740993), 9007199254740992.0, 9007199254740993},
        NumberRow{"RealTooLargeForAnInteger", real(0x1p63), 0x1p63, std::nullopt},
        NumberRow{"SmallestInteger", real(-0x1p63), -0x1p63, std::numeric_limits<std::int64_t>::min()},
        NumberRow{"Infinity", real(HUGE_VAL), HUGE_VAL, std::nullopt},
        NumberRow{"Array", PropertyList(Array()), std::nullopt, std::nullopt},
        NumberRow{"Reference", PropertyList(Uid{1}), std::nullopt, std::nullopt},
        NumberRow{"Other", PropertyList(), std::nullopt, std::nullopt}),
    [](const auto& row) { return row.param.name; });

TEST(PropertyListNumber, NotANumberIsNoInteger) {
    EXPECT_EQ(real(std::nan("")).integer(), std::nullopt);
}

TEST(PropertyListDictionary, KeepsTheOrderAndFindsEachKey) {
    const PropertyList list(Dictionary{{"b", integer(1)}, {"a", integer(2)}, {"c", integer(3)}});
    const auto* dictionary = list.as<Dictionary>();
    ASSERT_NE(dictionary, nullptr);
    std::string keys;
    for (const auto& [key, value] : *dictionary) keys += key;
    EXPECT_EQ(keys, "bac");
    ASSERT_NE(list.find("a"), nullptr);
    EXPECT_EQ(*list.find("a"), integer(2));
    EXPECT_EQ(*list.find("c"), integer(3));
    EXPECT_EQ(list.find("d"), nullptr);
    EXPECT_EQ(list.find(""), nullptr);
    EXPECT_EQ(integer(1).find("a"), nullptr);
}

TEST(PropertyListDictionary, TheLaterValueOfARepeatedKeyCounts) {
    const Dictionary repeated{
        {"b", integer(1)}, {"a", integer(2)}, {"b", integer(3)}, {"b", integer(4)}, {"c", integer(5)}};
    EXPECT_EQ(repeated, (Dictionary{{"b", integer(4)}, {"a", integer(2)}, {"c", integer(5)}}));
    EXPECT_EQ(*repeated.find("b"), integer(4));
    EXPECT_EQ(*repeated.find("c"), integer(5));
}

TEST(PropertyListDictionary, GrowsBehindItsEntries) {
    Dictionary dictionary;
    EXPECT_TRUE(dictionary.empty());
    dictionary.emplace("b", integer(1));
    dictionary.emplace("a", integer(2));
    dictionary.emplace("b", integer(3));
    EXPECT_EQ(dictionary, (Dictionary{{"b", integer(1)}, {"a", integer(2)}}));
    EXPECT_EQ(*dictionary.find("a"), integer(2));
}

// Round trips
// ----------------------------------------------------------------------------------------------------------

struct ValueRow {
    const char* name;
    PropertyList list;
};
class PropertyListRoundTrip : public testing::TestWithParam<ValueRow> {};
TEST_P(PropertyListRoundTrip, ThroughXml) {
    EXPECT_EQ(parsePropertyList(xmlPropertyList(GetParam().list)), GetParam().list)
        << asText(xmlPropertyList(GetParam().list));
}
TEST_P(PropertyListRoundTrip, ThroughBinary) {
    EXPECT_EQ(parsePropertyList(binaryPropertyList(GetParam().list)), GetParam().list);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PropertyListRoundTrip,
    testing::Values(
        ValueRow{"True", PropertyList(true)}, ValueRow{"False", PropertyList(false)}, ValueRow{"Zero", integer(0)},
        ValueRow{"MinusOne", integer(-1)}, ValueRow{"Byte", integer(255)}, ValueRow{"TwoBytes", integer(256)},
        ValueRow{"FourBytes", integer(65536)},
        ValueRow{"Smallest32", integer(std::numeric_limits<std::int32_t>::min())},
        ValueRow{"Largest32Unsigned", integer(0xFFFFFFFF)}, ValueRow{"EightBytes", integer(0x100000000)},
        ValueRow{"Smallest64", integer(std::numeric_limits<std::int64_t>::min())},
        ValueRow{"Largest64", integer(std::numeric_limits<std::int64_t>::max())}, ValueRow{"RealTenth", real(0.1)},
        ValueRow{"RealThird", real(1.0 / 3)}, ValueRow{"RealWhole", real(3)},
        ValueRow{"RealHuge", real(1.7976931348623157e308)}, ValueRow{"RealTiny", real(5e-324)},
        ValueRow{"RealInfinite", real(HUGE_VAL)}, ValueRow{"RealMinusInfinite", real(-HUGE_VAL)},
        ValueRow{"RealAboveFloat", real(3.5e38)}, ValueRow{"Text", text("rose.dst")}, ValueRow{"EmptyText", text("")},
        ValueRow{"LongText", text(std::string(70000, 'x'))}, ValueRow{"TextWithMarkup", text("a<b>&\"'&amp;]]>")},
        ValueRow{"TextWithSpaces", text(" a\r\n\tb ")}, ValueRow{"TextBeyondAscii", text("\u00E9\u20AC\U0001F9F5")},
        ValueRow{"Data", PropertyList(Data{0})}, ValueRow{"EmptyData", PropertyList(Data())},
        ValueRow{"TwoBytesOfData", PropertyList(Data{1, 0xFF})},
        ValueRow{"ThreeBytesOfData", PropertyList(Data{0xFB, 0xFF, 0xFE})},
        ValueRow{"LongData", PropertyList(Data(1000, 0xAA))}, ValueRow{"Reference", PropertyList(Uid{0})},
        ValueRow{"LargeReference", PropertyList(Uid{0x12345678})}, ValueRow{"Nested64", nested(64, text("x"))},
        ValueRow{"EmptyArray", PropertyList(Array())}, ValueRow{"EmptyDictionary", PropertyList(Dictionary())},
        ValueRow{"ManyEntries", PropertyList(Array(70000, integer(3)))}, ValueRow{"Sample", sample()}),
    [](const auto& row) { return row.param.name; });

TEST(PropertyListRoundTrip, KeepsTheSignOfZero) {
    // In the binary form alone: libplist writes "0.0" into XML.
    const auto list = parsePropertyList(binaryPropertyList(real(-0.0)));
    ASSERT_TRUE(list && list->as<double>());
    EXPECT_TRUE(std::signbit(*list->as<double>()));
    EXPECT_EQ(parsePropertyList(xmlPropertyList(real(-0.0))), real(0));
}

TEST(PropertyListRoundTrip, KeepsEveryBitOfSeededReals) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 2000; ++i) {
        const auto value = std::bit_cast<double>(random());
        for (const auto& bytes : {xmlPropertyList(real(value)), binaryPropertyList(real(value))}) {
            const auto list = parsePropertyList(bytes);
            ASSERT_TRUE(list && list->as<double>()) << value;
            if (std::isnan(value))
                EXPECT_TRUE(std::isnan(*list->as<double>()));
            else
                EXPECT_EQ(*list->as<double>(), value);
        }
    }
}

TEST(PropertyListRoundTrip, KeepsTheOrderOfKeys) {
    const PropertyList list(Dictionary{{"b", integer(1)}, {"a", integer(2)}});
    const PropertyList swapped(Dictionary{{"a", integer(2)}, {"b", integer(1)}});
    EXPECT_NE(parsePropertyList(xmlPropertyList(list)), swapped);
    EXPECT_NE(parsePropertyList(binaryPropertyList(list)), swapped);
}

TEST(PropertyListRoundTrip, ReplacesWhatIsNoText) {
    const auto wrong = text("a\xFF\xC3z\xED\xA0\x80\xC0\x80");
    const auto right = text("a\uFFFD\uFFFDz\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(parsePropertyList(xmlPropertyList(wrong)), right);
    EXPECT_EQ(parsePropertyList(binaryPropertyList(wrong)), right);
    EXPECT_EQ(parsePropertyList(xmlPropertyList(text(std::string("\x01\0z\uFFFF", 6)))), text("\uFFFD\uFFFDz\uFFFD"));
    EXPECT_EQ(parsePropertyList(binaryPropertyList(text(std::string("\x01\0z", 3)))), text("\x01\uFFFDz"));
}

TEST(PropertyListWriting, WritesXmlAsOtherToolsDo) {
    const PropertyList list(Array{PropertyList(Dictionary{{"name", text("a&b")}, {"red", real(0.5)}}), integer(-2)});
    EXPECT_EQ(asText(xmlPropertyList(list)),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<array>\n"
              "\t<dict>\n"
              "\t\t<key>name</key>\n"
              "\t\t<string>a&amp;b</string>\n"
              "\t\t<key>red</key>\n"
              "\t\t<real>0.5</real>\n"
              "\t</dict>\n"
              "\t<integer>-2</integer>\n"
              "</array>\n"
              "</plist>\n");
}

TEST(PropertyListWriting, TakesTheNarrowestBinaryNumber) {
    constexpr std::size_t frame = 8 + 1 + 32;  // header, one offset, trailer
    const auto sizeOf = [](const PropertyList& list) { return binaryPropertyList(list).size() - frame; };
    EXPECT_EQ(sizeOf(real(0.5)), 5U);
    EXPECT_EQ(sizeOf(real(static_cast<double>(0.1F))), 5U);
    EXPECT_EQ(sizeOf(real(0.1)), 9U);
    EXPECT_EQ(sizeOf(real(1e300)), 9U);
    EXPECT_EQ(sizeOf(integer(255)), 2U);
    EXPECT_EQ(sizeOf(integer(-1)), 9U);
}

// Crawls where the time of a value grows with the number of those before it.
TEST(PropertyListReading, ManyDictionariesTakeLinearTime) {
    const PropertyList entry(Dictionary{{"name", text("a")}, {"red", real(0.5)}});
    const PropertyList list(Array(100000, entry));
    EXPECT_EQ(parsePropertyList(xmlPropertyList(list)), list);
}

TEST(PropertyListReading, RefusesDictionariesOfVeryManyKeys) {
    const auto keys = [](int count) {
        std::string entries;
        for (int i = 0; i < count; ++i) entries += "<key>" + std::to_string(i) + "</key><true/>";
        return "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
    };
    EXPECT_TRUE(parsed(keys(10000)));
    EXPECT_FALSE(parsed(keys(65537)));
}

TEST(PropertyListReading, RefusesKeysThatRepeatWithoutEnd) {
    const std::string entries = repeated("<key>a</key><true/>", 100000);
    EXPECT_FALSE(parsed("<plist version=\"1.0\"><dict>" + entries + "</dict></plist>"));
}

TEST(PropertyListReading, RefusesTextsOfVeryManyReferences) {
    const auto references = [](int count) { return "<plist><string>" + repeated("&lt;", count) + "</string></plist>"; };
    EXPECT_EQ(parsed(references(20000)), text(std::string(20000, '<')));
    EXPECT_FALSE(parsed(references(200000)));
}

TEST(PropertyListReading, RefusesTagsWhoseQuotesStayOpen) {
    // To libplist the quoted end tags are none, so that the arrays nest without end.
    std::string nested;
    for (int i = 0; i < 1000; ++i) nested += "<array><string a=\"></array>\"></string>";
    EXPECT_FALSE(parsed("<plist version=\"1.0\">" + nested + "</plist>"));
}

// XML
// ------------------------------------------------------------------------------------------------------------------

struct XmlRow {
    const char* name;
    std::string xml;
    std::optional<PropertyList> list;
};
class PropertyListXml : public testing::TestWithParam<XmlRow> {};
TEST_P(PropertyListXml, GivesTheRow) {
    EXPECT_EQ(parsed(GetParam().xml), GetParam().list);
}

std::string plist(std::string_view content) {
    return "<plist version=\"1.0\">" + std::string(content) + "</plist>";
}

INSTANTIATE_TEST_SUITE_P(
    Accepted, PropertyListXml,
    testing::Values(
        XmlRow{"NegativeInteger", plist("<integer>-5</integer>"), integer(-5)},
        XmlRow{"PlusSign", plist("<integer> +5 </integer>"), integer(5)},
        XmlRow{"HexadecimalInteger", plist("<integer>0x1F</integer>"), integer(31)},
        XmlRow{"NegativeHexadecimalInteger", plist("<integer>-0X1f</integer>"), integer(-31)},
        XmlRow{"LeadingZeroIsOctal", plist("<integer>010</integer>"), integer(8)},
        XmlRow{"SmallestInteger", plist("<integer>-9223372036854775808</integer>"),
               integer(std::numeric_limits<std::int64_t>::min())},
        XmlRow{"IntegerOf64UnsignedBits", plist("<integer>18446744073709551615</integer>"), PropertyList()},
        XmlRow{"HugeInteger", plist("<integer>99999999999999999999999</integer>"), PropertyList()},
        XmlRow{"Real", plist("<real>-1.5e3</real>"), real(-1500)},
        XmlRow{"RealWithPlus", plist("<real>+.5</real>"), real(0.5)},
        XmlRow{"RealInfinity", plist("<real>+infinity</real>"), real(HUGE_VAL)},
        XmlRow{"RealMinusInf", plist("<real>-inf</real>"), real(-HUGE_VAL)},
        XmlRow{"Entities", plist("<string>&lt;&#65;&#x20AC;&amp;&quot;&apos;&gt;</string>"), text("<A\u20AC&\"'>")},
        XmlRow{"CharacterData", plist("<string>a<![CDATA[<x>&]]>b</string>"), text("a<x>&b")},
        XmlRow{"CommentInText", plist("<string>a<!-- </string> -->b</string>"), text("ab")},
        XmlRow{"CommentBetween", plist("<array><!-- </array> --><true/><!----></array>"),
               PropertyList(Array{PropertyList(true)})},
        XmlRow{"WrongUtf8", plist("<string>a\xFF</string>"), text("a\uFFFD")},
        XmlRow{"EmptyText", plist("<string/>"), text("")},
        XmlRow{"TrueWithEnd", plist("<true></true>"), PropertyList(true)},
        XmlRow{"DataInLines", plist("<data>\n\tAQI\n\tD\n</data>"), PropertyList(Data{1, 2, 3})},
        XmlRow{"PaddedData", plist("<data>AQ==</data>"), PropertyList(Data{1})},
        XmlRow{"Date", plist("<date>2011-01-01T00:00:00Z</date>"), PropertyList()},
        XmlRow{"EmptyDictionaryWithSpaces", plist("<dict> </dict >"), PropertyList(Dictionary())},
        XmlRow{"RepeatedKey", plist("<dict><key>a</key><true/><key>a</key><false/></dict>"),
               PropertyList(Dictionary{{"a", PropertyList(false)}})},
        XmlRow{"Reference", plist("<dict><key>CF$UID</key><integer>3</integer></dict>"), PropertyList(Uid{3})},
        XmlRow{"ReferenceThatIsText", plist("<dict><key>CF$UID</key><string>3</string></dict>"),
               PropertyList(Dictionary{{"CF$UID", text("3")}})},
        XmlRow{"NegativeReference", plist("<dict><key>CF$UID</key><integer>-3</integer></dict>"),
               PropertyList(Dictionary{{"CF$UID", integer(-3)}})},
        XmlRow{"ReferenceOfMoreThan32Bits", plist("<dict><key>CF$UID</key><integer>4294967296</integer></dict>"),
               PropertyList(Dictionary{{"CF$UID", integer(4294967296)}})},
        XmlRow{"ReferenceAmongOthers", plist("<dict><key>CF$UID</key><integer>3</integer><key>a</key><true/></dict>"),
               PropertyList(Dictionary{{"CF$UID", integer(3)}, {"a", PropertyList(true)}})},
        XmlRow{"WithoutPlistElement", "<?xml version=\"1.0\"?><array/>", PropertyList(Array())},
        XmlRow{"ByteOrderMark", "\xEF\xBB\xBF" + plist("<true/>") + "\n<!-- end -->\n", PropertyList(true)},
        XmlRow{"DocumentType", "<?xml version=\"1.0\"?>\n<!DOCTYPE plist SYSTEM \"x\">\n" + plist("<true/>"),
               PropertyList(true)},
        XmlRow{"Levels64", repeated("<array>", 64) + repeated("</array>", 64), nested(63, PropertyList(Array()))}),
    [](const auto& row) { return row.param.name; });

// Damage that libplist takes for something: harmless, and the same for everybody who reads such a file by it.
INSTANTIATE_TEST_SUITE_P(
    Lenient, PropertyListXml,
    testing::Values(XmlRow{"TwoRoots", plist("<true/><true/>"), PropertyList(true)},
                    XmlRow{"TextBehindTheEnd", plist("<true/>") + "x", PropertyList(true)},
                    XmlRow{"ClosedTwice", plist("<true/>") + "</plist>", PropertyList(true)},
                    XmlRow{"StrayKey", plist("<key>a</key>"), text("a")},
                    XmlRow{"KeyWithoutValue", plist("<dict><key>a</key></dict>"), PropertyList(Dictionary())},
                    XmlRow{"NoInteger", plist("<integer>abc</integer>"), integer(0)},
                    XmlRow{"EmptyInteger", plist("<integer/>"), integer(0)},
                    XmlRow{"IntegerWithFraction", plist("<integer>1.5</integer>"), integer(1)},
                    XmlRow{"TwoSigns", plist("<integer>--5</integer>"), integer(5)},
                    XmlRow{"SignInHexadecimal", plist("<integer>0x-5</integer>"), integer(0)},
                    XmlRow{"NoReal", plist("<real>x</real>"), real(0)},
                    XmlRow{"RealWithComma", plist("<real>1,5</real>"), real(1)},
                    XmlRow{"EmptyReal", plist("<real></real>"), real(0)},
                    XmlRow{"TextInTrue", plist("<true>x</true>"), PropertyList(true)},
                    XmlRow{"NoBase64", plist("<data>A*==</data>"), PropertyList(Data())},
                    XmlRow{"HalfByteOfData", plist("<data>AQIDB</data>"), PropertyList(Data{1, 2, 3})},
                    XmlRow{"DataBehindPadding", plist("<data>AQ==AQ==</data>"), PropertyList(Data{1, 1})},
                    XmlRow{"SurrogateEntity", plist("<string>&#xD800;</string>"), text("\uFFFD\uFFFD\uFFFD")}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, PropertyListXml,
    testing::Values(
        XmlRow{"Nothing", "", {}}, XmlRow{"Text", "hello", {}}, XmlRow{"AngleBracket", "<", {}},
        XmlRow{"OpenTag", "<plist", {}}, XmlRow{"Empty", "<plist></plist>", {}}, XmlRow{"EmptyElement", "<plist/>", {}},
        XmlRow{"OtherDocument", "<html><body/></html>", {}}, XmlRow{"OldStyleText", "{ a = b; }", {}},
        XmlRow{"NoEndOfPlist", "<plist><string>abc</string>", {}}, XmlRow{"NoEndOfText", "<plist><string>abc", {}},
        XmlRow{"CrossedElements", plist("<array><dict></array></dict>"), {}}, XmlRow{"StrayEnd", plist("</array>"), {}},
        XmlRow{"StrayText", plist("<array>x</array>"), {}}, XmlRow{"UnknownElement", plist("<set/>"), {}},
        XmlRow{"ElementInText", plist("<string><array/></string>"), {}},
        XmlRow{"ValueWithoutKey", plist("<dict><true/></dict>"), {}},
        XmlRow{"KeyBehindKey", plist("<dict><key>a</key><key>b</key><true/></dict>"), {}},
        XmlRow{"TextAsKey", plist("<dict><string>a</string><true/></dict>"), {}},
        XmlRow{"LevelsInAnInstructionThatIsOverAtOnce", "<?>" + repeated("<array>", 65) + "?>", {}},
        XmlRow{"LevelsBehindAnInstructionWithAQuotedEnd", "<?x \"?> <!-- \" ?>" + repeated("<array>", 65) + " -->", {}},
        XmlRow{
            "LevelsInADocumentTypeWithAQuotedEnd", "<!DOCTYPE x \"> <!-- \">" + repeated("<array>", 65) + " -->", {}},
        XmlRow{"LevelsInsideQuotes", plist(repeated("<array><string a=\"></array>\"></string>", 65)), {}},
        XmlRow{"LongTag", "<" + std::string(100000, 'a') + ">", {}},
        XmlRow{"EntityWithAKnownBeginning", plist("<string>&ampere;</string>"), {}},
        XmlRow{"AmpersandAtTheEnd", plist("<string>a&</string>"), {}},
        XmlRow{"UnknownEntity", plist("<string>&foo;</string>"), {}},
        XmlRow{"OpenEntity", plist("<string>&amp</string>"), {}},
        XmlRow{"NulEntity", plist("<string>&#0;</string>"), {}},
        XmlRow{"EntityBeyondUnicode", plist("<string>&#1114112;</string>"), {}},
        XmlRow{"HugeEntity", plist("<string>&#99999999999;</string>"), {}},
        XmlRow{"DeclaredEntities",
               "<!DOCTYPE plist [<!ENTITY a 'b'><!ENTITY b '&a;&a;'>]>" + plist("<string>&b;</string>"),
               {}},
        XmlRow{"DocumentTypeWithDeclarations", "<!DOCTYPE plist []>" + plist("<true/>"), {}},
        XmlRow{"OpenComment", plist("<array><!-- </array>"), {}},
        XmlRow{"OpenCharacterData", plist("<string><![CDATA[x</string>"), {}},
        XmlRow{"NulByte", plist(std::string("<string>a\0b</string>", 20)), {}},
        XmlRow{"NulBehindTheEnd", plist("<true/>") + std::string(1, '\0'), {}},
        XmlRow{"Levels65", repeated("<array>", 65) + repeated("</array>", 65), {}},
        XmlRow{"Levels65OfDictionaries", repeated("<dict><key>a</key>", 64) + "<dict/>" + repeated("</dict>", 64), {}},
        XmlRow{"MillionLevels", repeated("<array>", 1000000), {}},
        XmlRow{"LevelsBehindComments", repeated("<array><!-- </array> -->", 65) + repeated("</array>", 65), {}}),
    [](const auto& row) { return row.param.name; });

// The binary form
// ------------------------------------------------------------------------------------------------------

void append(Bytes& bytes, std::uint64_t value, std::size_t width) {
    while (width-- > 0) bytes.push_back(width < 8 ? static_cast<std::uint8_t>(value >> 8 * width) : std::uint8_t{0});
}

struct Frame {
    std::size_t offsetWidth = 1;
    std::size_t referenceWidth = 1;
    std::optional<std::uint64_t> count = {};
    std::uint64_t root = 0;
    std::optional<std::uint64_t> table = {};
    std::optional<std::uint64_t> firstOffset = {};
};

Bytes binary(const std::vector<Bytes>& objects, const Frame& frame = {}) {
    Bytes bytes = bytesOf("bplist00");
    std::vector<std::uint64_t> offsets;
    for (const Bytes& object : objects) {
        offsets.push_back(bytes.size());
        bytes.insert(bytes.end(), object.begin(), object.end());
    }
    const std::uint64_t table = bytes.size();
    if (frame.firstOffset) offsets.front() = *frame.firstOffset;
    for (const std::uint64_t offset : offsets) append(bytes, offset, frame.offsetWidth);
    append(bytes, 0, 6);
    append(bytes, frame.offsetWidth, 1);
    append(bytes, frame.referenceWidth, 1);
    append(bytes, frame.count.value_or(objects.size()), 8);
    append(bytes, frame.root, 8);
    append(bytes, frame.table.value_or(table), 8);
    return bytes;
}

// Each level holds the next one so many times.
Bytes levels(std::uint8_t count, std::uint8_t times) {
    std::vector<Bytes> objects;
    for (std::uint8_t i = 0; i < count; ++i) {
        Bytes array{static_cast<std::uint8_t>(0xA0 | times)};
        array.insert(array.end(), times, static_cast<std::uint8_t>(i + 1));
        objects.push_back(std::move(array));
    }
    objects.push_back({0x09});
    return binary(objects);
}

Bytes sharedText(std::size_t length, std::uint8_t times) {
    Bytes text{0x5F, 0x11};
    append(text, length, 2);
    text.insert(text.end(), length, 'x');
    Bytes array{0xAF, 0x10, times};
    array.insert(array.end(), times, 1);
    return binary({array, text});
}

struct BinaryRow {
    const char* name;
    Bytes bytes;
    std::optional<PropertyList> list;
};
class PropertyListBinary : public testing::TestWithParam<BinaryRow> {};
TEST_P(PropertyListBinary, GivesTheRow) {
    EXPECT_EQ(parsePropertyList(GetParam().bytes), GetParam().list);
}

const Bytes minusOne16{0x14, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
const Bytes unsigned64{0x14, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255};

INSTANTIATE_TEST_SUITE_P(
    Accepted, PropertyListBinary,
    testing::Values(
        BinaryRow{"NarrowIntegersHaveNoSign", binary({{0x10, 0xFF}}), integer(255)},
        BinaryRow{"IntegerOfFourBytes", binary({{0x12, 0xFF, 0xFF, 0xFF, 0xFB}}), integer(0xFFFFFFFB)},
        BinaryRow{"IntegersOfEightBytesHaveOne", binary({{0x13, 255, 255, 255, 255, 255, 255, 255, 0xFB}}),
                  integer(-5)},
        BinaryRow{"IntegerOfSixteenBytes", binary({minusOne16}), PropertyList()},
        BinaryRow{"IntegerOf64UnsignedBits", binary({unsigned64}), PropertyList()},
        BinaryRow{"Float", binary({{0x22, 0x3F, 0, 0, 0}}), real(0.5)},
        BinaryRow{"Double", binary({{0x23, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0}}), real(0.5)},
        BinaryRow{"Date", binary({{0x33, 0, 0, 0, 0, 0, 0, 0, 0}}), PropertyList()},
        BinaryRow{"HalfASurrogatePair", binary({{0x62, 0xD8, 0x00, 0x00, 0x41}}), text("A")},
        BinaryRow{"SurrogatePair", binary({{0x62, 0xD8, 0x3E, 0xDD, 0xF5}}), text("\U0001F9F5")},
        BinaryRow{"HighBytesInText", binary({{0x51, 0xE9}}), text("\uFFFD")},
        BinaryRow{"ReferenceOfFourBytes", binary({{0x83, 0, 0, 1, 0}}), PropertyList(Uid{256})},
        BinaryRow{"RepeatedKey", binary({{0xD2, 1, 1, 2, 3}, {0x51, 'a'}, {0x08}, {0x09}}),
                  PropertyList(Dictionary{{"a", PropertyList(true)}})},
        BinaryRow{"ReferenceNamedAsInXml", binary({{0xD1, 1, 2}, {0x56, 'C', 'F', '$', 'U', 'I', 'D'}, {0x10, 3}}),
                  PropertyList(Uid{3})},
        BinaryRow{"OddOffsetWidth", binary({{0xA1, 1}, {0x09}}, {.offsetWidth = 3}),
                  PropertyList(Array{PropertyList(true)})},
        BinaryRow{"OddReferenceWidth", binary({{0xA1, 0, 0, 0, 0, 1}, {0x09}}, {.referenceWidth = 5}),
                  PropertyList(Array{PropertyList(true)})},
        BinaryRow{"RootElsewhere", binary({{0x08}, {0x09}}, {.root = 1}), PropertyList(true)},
        BinaryRow{"SharedArray", levels(3, 2),
                  PropertyList(Array(2, PropertyList(Array(2, PropertyList(Array(2, PropertyList(true)))))))},
        BinaryRow{"Levels64", levels(64, 1), nested(64, PropertyList(true))}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, PropertyListBinary,
    testing::Values(
        BinaryRow{"HeaderOnly", bytesOf("bplist00"), {}}, BinaryRow{"TrailerOnly", Bytes(32), {}},
        BinaryRow{"NoObjects", binary({}), {}},
        BinaryRow{"OffsetsWithoutWidth", binary({{0x09}}, {.offsetWidth = 0}), {}},
        BinaryRow{"OffsetsTooWide", binary({{0x09}}, {.offsetWidth = 9}), {}},
        BinaryRow{"ReferencesWithoutWidth", binary({{0xA1, 1}, {0x09}}, {.referenceWidth = 0}), {}},
        BinaryRow{"ReferencesTooWide", binary({{0xA1, 1}, {0x09}}, {.referenceWidth = 200}), {}},
        BinaryRow{"HugeNumberOfObjects", binary({{0x09}}, {.count = 0x2000000000000001}), {}},
        BinaryRow{"MoreObjectsThanOffsets", binary({{0x09}}, {.count = 2, .root = 1}), {}},
        BinaryRow{"RootOutsideTheTable", binary({{0x09}}, {.root = 1}), {}},
        BinaryRow{"TableOutsideTheFile", binary({{0x09}}, {.table = 1000}), {}},
        BinaryRow{"TableAtTheLastPlace", binary({{0x09}}, {.table = 0xFFFFFFFFFFFFFFFF}), {}},
        BinaryRow{"TableInTheHeader", binary({{0x09}}, {.table = 3}), {}},
        BinaryRow{"OffsetInTheHeader", binary({{0x09}}, {.firstOffset = 0}), {}},
        BinaryRow{"OffsetInTheTrailer", binary({{0x09}}, {.firstOffset = 20}), {}},
        BinaryRow{"HugeOffset", binary({{0x09}}, {.offsetWidth = 8, .firstOffset = 0xFFFFFFFFFFFFFFF8}), {}},
        BinaryRow{"ReferenceOutsideTheTable", binary({{0xA1, 7}}), {}},
        BinaryRow{"ArrayInItself", binary({{0xA1, 0}}), {}},
        BinaryRow{"CircleOfTwo", binary({{0xA1, 1}, {0xD1, 2, 0}, {0x51, 'a'}}), {}},
        BinaryRow{"NulInText", binary({{0x53, 'a', 0, 'b'}}), {}},
        BinaryRow{"NulInWideText", binary({{0x63, 0, 'a', 0, 0, 0, 'b'}}), {}},
        BinaryRow{"NulInKey", binary({{0xD1, 1, 2}, {0x53, 'a', 0, 'b'}, {0x09}}), {}},
        BinaryRow{"NulInWideKey", binary({{0xD1, 1, 2}, {0x63, 0, 'a', 0, 0, 0, 'b'}, {0x09}}), {}},
        BinaryRow{"KeyThatIsNoText", binary({{0xD1, 1, 1}, {0x09}}), {}},
        BinaryRow{"KeyThatIsAnArray", binary({{0xD1, 1, 2}, {0xA0}, {0x09}}), {}},
        BinaryRow{"TextBeyondTheObjects", binary({{0x5A, 'a'}}), {}},
        BinaryRow{"HugeCount", binary({{0x5F, 0x13, 255, 255, 255, 255, 255, 255, 255, 255}}), {}},
        BinaryRow{"HugeCountOfUnits", binary({{0x6F, 0x13, 0x80, 0, 0, 0, 0, 0, 0, 1, 0, 65}}), {}},
        BinaryRow{"HugeCountOfEntries", binary({{0xDF, 0x13, 0x80, 0, 0, 0, 0, 0, 0, 0}}), {}},
        BinaryRow{"CountThatIsNoInteger", binary({{0x5F, 0x51, 'a'}}), {}},
        BinaryRow{"CountCutOff", binary({{0x5F, 0x13, 0}}), {}}, BinaryRow{"CountMissing", binary({{0x5F}}), {}},
        BinaryRow{"IntegerCutOff", binary({{0x13, 1}}), {}}, BinaryRow{"IntegerOf32Bytes", binary({{0x15, 1}}), {}},
        BinaryRow{"RealOfTwoBytes", binary({{0x21, 1, 1}}), {}},
        BinaryRow{"ReferenceOfNineBytes", binary({Bytes(10, 0x88)}), {}},
        BinaryRow{"Set", binary({{0xC1, 1}, {0x09}}), {}}, BinaryRow{"UnknownMark", binary({{0xF0}}), {}},
        BinaryRow{"Null", binary({{0x00}}), {}}, BinaryRow{"UnknownSimpleValue", binary({{0x0F}}), {}},
        BinaryRow{"Levels65", levels(65, 1), {}}, BinaryRow{"Levels200", levels(200, 1), {}},
        BinaryRow{"ArraysThatUnfoldWithoutEnd", levels(60, 2), {}},
        BinaryRow{"ArraysThatUnfoldFast", levels(30, 14), {}},
        BinaryRow{"LongTextNamedOften", sharedText(60000, 200), {}}),
    [](const auto& row) { return row.param.name; });

// Hostile input
// --------------------------------------------------------------------------------------------------------

TEST(PropertyListReading, RefusesEveryPrefix) {
    auto xml = xmlPropertyList(sample());
    xml.pop_back();  // the list is whole without the last line's end
    for (const auto& whole : {xml, binaryPropertyList(sample())}) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_EQ(parsePropertyList(std::span(whole).first(length)), std::nullopt) << length;
        }
        EXPECT_EQ(parsePropertyList(whole), sample());
    }
}

TEST(PropertyListReading, SurvivesSeededMutations) {
    std::mt19937 random(20240607);
    int readable = 0;
    for (const auto& whole : {xmlPropertyList(sample()), binaryPropertyList(sample())}) {
        for (int round = 0; round < 5000; ++round) {
            Bytes mutated = whole;
            for (auto count = 1 + random() % 4; count > 0; --count) {
                mutated[random() % mutated.size()] = static_cast<std::uint8_t>(random());
            }
            const auto list = parsePropertyList(mutated);
            if (!list) continue;
            ++readable;
            (void)xmlPropertyList(*list);
            EXPECT_TRUE(parsePropertyList(binaryPropertyList(*list)));
        }
    }
    EXPECT_GT(readable, 100);  // else the mutations stop at the door
}

}  // namespace
}  // namespace velamo
