#include "velamo/platform/plist/keyed_archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/support/property_lists.h"
#include "velamo/platform/plist/property_list.h"

namespace velamo {
namespace {

using test::integer;
using test::real;
using test::text;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Entry = Dictionary::Entry;

PropertyList uid(std::uint32_t index) {
    return PropertyList(PropertyList::Uid{index});
}
PropertyList classObject(const std::string& name, std::vector<std::string> superclasses = {"NSObject"}) {
    Array chain{text(name)};
    for (auto& superclass : superclasses) chain.push_back(text(std::move(superclass)));
    return PropertyList(Dictionary{{"$classname", text(name)}, {"$classes", PropertyList(std::move(chain))}});
}
PropertyList listClass() {
    return classObject("NSMutableArray", {"NSArray", "NSObject"});
}

PropertyList object(std::vector<Entry> entries) {
    return PropertyList(Dictionary(std::move(entries)));
}

PropertyList archive(Array objects, PropertyList root = uid(1)) {
    return PropertyList(Dictionary{{"$version", integer(100000)},
                                   {"$archiver", text("NSKeyedArchiver")},
                                   {"$top", PropertyList(Dictionary{{"root", std::move(root)}})},
                                   {"$objects", PropertyList(std::move(objects))}});
}

// A root of class "Thread", number 1 in the table, with one entry, and the objects behind its class, which is number 2.
PropertyList archiveWith(PropertyList value, const Array& others = {}) {
    Array objects{text("$null"), object({{"key", std::move(value)}, {"$class", uid(2)}}), classObject("Thread")};
    objects.insert(objects.end(), others.begin(), others.end());
    return archive(std::move(objects));
}

void decode(const Bytes& bytes, const KeyedUnarchiver::Body& body) {
    KeyedUnarchiver::unarchiveRoot(bytes, "Thread", body);
}

std::string refusalOf(const Bytes& bytes, const KeyedUnarchiver::Body& body) {
    try {
        decode(bytes, body);
        return "";
    } catch (const KeyedArchiveError& error) {
        return error.what();
    }
}

void decodeNothing(KeyedUnarchiver& /*object*/) {}

// Layout
// ---------------------------------------------------------------------------------------------------------------

void encodeStitch(KeyedArchiver& stitch, std::size_t index) {
    stitch.encodeFloat("X", static_cast<float>(index) + 0.1F);
    stitch.encodeBool("IsJump", index == 1);
}

void encodeDesign(KeyedArchiver& design) {
    design.encodeList("Stitches", "Stitch", 2, encodeStitch);
    design.encodeText("Name", "ros\u00E9");
    design.encodeText("Type", std::nullopt);
    design.encodeLocation("Location", std::filesystem::path("/tmp/a b%\u00E9.dst"));
    design.encodeLocation("Nowhere", std::nullopt);
    design.encodeObject("Hoop", "Hoop", [](KeyedArchiver& hoop) { hoop.encodeInteger("Code", -7); });
    design.encodeNothing("Other");
    design.encodeInteger("Version", std::numeric_limits<std::int32_t>::min());
    design.encodeBool("IsShown", true);
}

TEST(KeyedArchiver, WritesTheTableInTheOrderOfEncoding) {
    const auto stitch = [](double x, bool isJump) {
        return object({{"X", real(x)}, {"IsJump", PropertyList(isJump)}, {"$class", uid(4)}});
    };
    const auto expected = archive({
        text("$null"),
        object({{"Stitches", uid(2)},
                {"Name", uid(7)},
                {"Type", uid(0)},
                {"Location", uid(8)},
                {"Nowhere", uid(0)},
                {"Hoop", uid(11)},
                {"Other", uid(0)},
                {"Version", integer(std::numeric_limits<std::int32_t>::min())},
                {"IsShown", PropertyList(true)},
                {"$class", uid(13)}}),
        object({{"NS.objects", PropertyList(Array{uid(3), uid(5)})}, {"$class", uid(6)}}),
        stitch(static_cast<double>(0.1F), false),
        classObject("Stitch"),
        stitch(static_cast<double>(1.1F), true),
        listClass(),
        text("ros\u00E9"),
        object({{"NS.base", uid(0)}, {"NS.relative", uid(9)}, {"$class", uid(10)}}),
        text("file:///tmp/a%20b%25%C3%A9.dst"),
        classObject("NSURL"),
        object({{"Code", integer(-7)}, {"$class", uid(12)}}),
        classObject("Hoop"),
        classObject("Design"),
    });
    EXPECT_EQ(parsePropertyList(KeyedArchiver::archiveRoot("Design", encodeDesign)), expected);
}

TEST(KeyedArchiver, WritesClassesOnce) {
    const auto bytes = KeyedArchiver::archiveRoot("Thread", [](KeyedArchiver& root) {
        root.encodeList("A", "Thread", 1, [](KeyedArchiver&, std::size_t) {});
        root.encodeList("B", "Thread", 0, [](KeyedArchiver&, std::size_t) {});
    });
    const auto list = parsePropertyList(bytes);
    ASSERT_TRUE(list && list->find("$objects"));
    EXPECT_EQ(list->find("$objects")->as<Array>()->size(), 7U);  // null, root, A, its object, Thread, NSMutableArray, B
}

// Round trips
// ----------------------------------------------------------------------------------------------------------

struct Form {
    const char* name;
    Bytes (*convert)(const PropertyList& list);
};
class KeyedArchiveForm : public testing::TestWithParam<Form> {};

TEST_P(KeyedArchiveForm, GivesBackEveryKind) {
    const auto written = KeyedArchiver::archiveRoot("Design", encodeDesign);
    std::vector<float> stitches;
    std::size_t announced = 0;
    KeyedUnarchiver::unarchiveRoot(
        GetParam().convert(*parsePropertyList(written)), "Design", [&](KeyedUnarchiver& design) {
            EXPECT_TRUE(design.decodeList(
                "Stitches", "Stitch", [&](std::size_t count) { announced = count; },
                [&](KeyedUnarchiver& stitch) {
                    EXPECT_EQ(stitch.decodeBool("IsJump"), stitches.size() == 1);
                    stitches.push_back(stitch.decodeFloat("X"));
                }));
            EXPECT_EQ(design.decodeText("Name"), "ros\u00E9");
            EXPECT_EQ(design.decodeText("Type"), std::nullopt);
            EXPECT_EQ(design.decodeLocation("Location"), "/tmp/a b%\u00E9.dst");
            EXPECT_EQ(design.decodeLocation("Nowhere"), std::nullopt);
            EXPECT_TRUE(design.decodeObject("Hoop", "Hoop",
                                            [](KeyedUnarchiver& hoop) { EXPECT_EQ(hoop.decodeInteger("Code"), -7); }));
            EXPECT_FALSE(design.decodeObject("Other", "Hoop", [](KeyedUnarchiver&) { ADD_FAILURE(); }));
            EXPECT_EQ(design.decodeInteger("Version"), std::numeric_limits<std::int32_t>::min());
            EXPECT_TRUE(design.decodeBool("IsShown"));
        });
    EXPECT_EQ(announced, 2U);
    EXPECT_EQ(stitches, (std::vector<float>{0.1F, 1.1F}));
}

TEST_P(KeyedArchiveForm, MissingKeysGiveNothing) {
    decode(GetParam().convert(archiveWith(integer(1))), [](KeyedUnarchiver& root) {
        EXPECT_EQ(root.decodeFloat("other"), 0);
        EXPECT_EQ(root.decodeInteger("other"), 0);
        EXPECT_FALSE(root.decodeBool("other"));
        EXPECT_EQ(root.decodeText("other"), std::nullopt);
        EXPECT_EQ(root.decodeLocation("other"), std::nullopt);
        EXPECT_FALSE(root.decodeObject("other", "Thread", [](KeyedUnarchiver&) { ADD_FAILURE(); }));
        EXPECT_FALSE(root.decodeList(
            "other", "Thread", [](std::size_t) { ADD_FAILURE(); }, decodeNothing));
        EXPECT_EQ(root.decodeInteger("key"), 1);  // whatever was asked for before
    });
}

INSTANTIATE_TEST_SUITE_P(Forms, KeyedArchiveForm,
                         testing::Values(Form{"Xml", xmlPropertyList}, Form{"Binary", binaryPropertyList}),
                         [](const auto& form) { return form.param.name; });

TEST(KeyedArchive, FloatsKeepTheirBits) {
    for (const float value : {0.0F, -0.0F, 3.4028235e38F, -3.4028235e38F, 1e-45F, -1e-45F, HUGE_VALF, 0.1F}) {
        const auto bytes =
            KeyedArchiver::archiveRoot("Thread", [&](KeyedArchiver& root) { root.encodeFloat("key", value); });
        decode(bytes, [&](KeyedUnarchiver& root) {
            const float found = root.decodeFloat("key");
            EXPECT_EQ(found, value);
            EXPECT_EQ(std::signbit(found), std::signbit(value));
        });
    }
}

TEST(KeyedArchive, TextsOfAnyKindComeBack) {
    for (const std::string value : {"", "$null", "a\nb", "\u20AC\U0001F9F5"}) {
        const auto bytes =
            KeyedArchiver::archiveRoot("Thread", [&](KeyedArchiver& root) { root.encodeText("key", value); });
        decode(bytes, [&](KeyedUnarchiver& root) { EXPECT_EQ(root.decodeText("key"), value); });
    }
}

TEST(KeyedArchive, LocationsOfAnyBytesComeBack) {
    for (const std::string path :
         {"/", "/a/b/", "/tmp/\xFF\x01 #?%41;:@.dst", "rose.dst", "a:b/c.dst", "../x", "", "//host/x"}) {
        const auto bytes = KeyedArchiver::archiveRoot(
            "Thread", [&](KeyedArchiver& root) { root.encodeLocation("key", std::filesystem::path(path)); });
        decode(bytes, [&](KeyedUnarchiver& root) {
            const auto found = root.decodeLocation("key");
            ASSERT_TRUE(found) << path;
            EXPECT_EQ(found->native(), path);
        });
    }
}

TEST(KeyedArchive, WhatABodyThrowsPasses) {
    const auto fail = [](auto& /*coder*/) { throw std::logic_error("body"); };
    EXPECT_THROW((void)KeyedArchiver::archiveRoot("Thread", fail), std::logic_error);
    EXPECT_THROW(decode(binaryPropertyList(archiveWith(integer(1))), fail), std::logic_error);
}

// Values of other kinds
// ------------------------------------------------------------------------------------------------

TEST(KeyedUnarchiver, NumbersAndBooleansStandForEachOtherWhereNothingIsLost) {
    decode(binaryPropertyList(archiveWith(integer(3))), [](KeyedUnarchiver& root) {
        EXPECT_EQ(root.decodeFloat("key"), 3.0F);
        EXPECT_TRUE(root.decodeBool("key"));
    });
    decode(binaryPropertyList(archiveWith(PropertyList(true))), [](KeyedUnarchiver& root) {
        EXPECT_EQ(root.decodeFloat("key"), 1.0F);
        EXPECT_EQ(root.decodeInteger("key"), 1);
    });
    decode(binaryPropertyList(archiveWith(real(0.1))),
           [](KeyedUnarchiver& root) { EXPECT_EQ(root.decodeFloat("key"), 0.1F); });
}

const auto asFloat = [](KeyedUnarchiver& root) { (void)root.decodeFloat("key"); };
const auto asInteger = [](KeyedUnarchiver& root) { (void)root.decodeInteger("key"); };
const auto asBool = [](KeyedUnarchiver& root) { (void)root.decodeBool("key"); };
const auto asText = [](KeyedUnarchiver& root) { (void)root.decodeText("key"); };
const auto asLocation = [](KeyedUnarchiver& root) { (void)root.decodeLocation("key"); };
const auto asObject = [](KeyedUnarchiver& root) { root.decodeObject("key", "Color", decodeNothing); };
const auto asList = [](KeyedUnarchiver& root) {
    root.decodeList(
        "key", "Color", [](std::size_t) {}, decodeNothing);
};

PropertyList location(std::string url, PropertyList base = uid(0), std::vector<Entry> more = {}) {
    Array others{object({{"NS.base", std::move(base)}, {"NS.relative", uid(4)}, {"$class", uid(5)}}),
                 text(std::move(url)), classObject("NSURL")};
    if (!more.empty()) others.push_back(object(std::move(more)));
    return archiveWith(uid(3), others);
}

PropertyList listOf(PropertyList entries, PropertyList listClassObject = listClass()) {
    return archiveWith(uid(3), {object({{"NS.objects", std::move(entries)}, {"$class", uid(4)}}),
                                std::move(listClassObject), object({{"$class", uid(6)}}), classObject("Color")});
}

struct Refusal {
    const char* name;
    PropertyList list;
    KeyedUnarchiver::Body body;
    const char* reason;
};
class KeyedUnarchiverRefusal : public testing::TestWithParam<Refusal> {};
TEST_P(KeyedUnarchiverRefusal, OfTheBinaryForm) {
    EXPECT_THAT(refusalOf(binaryPropertyList(GetParam().list), GetParam().body), HasSubstr(GetParam().reason));
}
TEST_P(KeyedUnarchiverRefusal, OfTheXmlForm) {
    EXPECT_THAT(refusalOf(xmlPropertyList(GetParam().list), GetParam().body), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Values, KeyedUnarchiverRefusal,
    testing::Values(
        Refusal{"TextAsFloat", archiveWith(text("1")), asFloat, "\"key\" is no number"},
        Refusal{"ReferenceAsFloat", archiveWith(uid(0)), asFloat, "\"key\" is no number"},
        Refusal{"RealAsInteger", archiveWith(real(1)), asInteger, "\"key\" is no integer"},
        Refusal{"IntegerAbove32Bits", archiveWith(integer(0x80000000)), asInteger, "\"key\" is no integer"},
        Refusal{"IntegerBelow32Bits", archiveWith(integer(-0x80000001LL)), asInteger, "\"key\" is no integer"},
        Refusal{"TextAsInteger", archiveWith(text("1")), asInteger, "\"key\" is no integer"},
        Refusal{"RealAsBool", archiveWith(real(1)), asBool, "\"key\" is no boolean"},
        Refusal{"ArrayAsBool", archiveWith(PropertyList(Array())), asBool, "\"key\" is no boolean"},
        Refusal{"TextInPlace", archiveWith(text("a")), asText, "\"key\" is no reference"},
        Refusal{"IntegerAsText", archiveWith(uid(3), {integer(1)}), asText, "\"key\" is no text"},
        Refusal{"ObjectAsText", archiveWith(uid(1)), asText, "class \"Thread\" where one of class \"NSMutableString\""},
        Refusal{"TextOutsideTheTable", archiveWith(uid(3)), asText, "\"key\" refers to an object that is not there"},
        Refusal{"TextFarOutsideTheTable", archiveWith(uid(0xFFFFFFFF)), asText,
                "\"key\" refers to an object that is not there"},
        Refusal{"IntegerAsObject", archiveWith(integer(1)), asObject, "\"key\" is no reference"},
        Refusal{"TextAsObject", archiveWith(uid(3), {text("a")}), asObject, "no \"Color\" where one belongs"},
        Refusal{"ObjectOutsideTheTable", archiveWith(uid(9)), asObject, "not there"},
        Refusal{"OtherClass", archiveWith(uid(3), {object({{"$class", uid(4)}}), classObject("Hoop")}), asObject,
                "class \"Hoop\" where one of class \"Color\""},
        Refusal{"ObjectWithoutClass", archiveWith(uid(3), {object({})}), asObject,
                "class \"\" where one of class \"Color\""},
        Refusal{"ClassThatIsNull", archiveWith(uid(3), {object({{"$class", uid(0)}})}), asObject, "class \"\" where"},
        Refusal{"ClassThatIsText", archiveWith(uid(3), {object({{"$class", text("Color")}})}), asObject,
                "\"$class\" is no reference"},
        Refusal{"ClassOutsideTheTable", archiveWith(uid(3), {object({{"$class", uid(77)}})}), asObject,
                "\"$class\" refers"},
        Refusal{"ClassThatIsAnObject", archiveWith(uid(3), {object({{"$class", uid(3)}})}), asObject, "has no class"},
        Refusal{"ClassThatIsATable", archiveWith(uid(3), {object({{"$class", uid(4)}}), PropertyList(Array())}),
                asObject, "has no class"},
        Refusal{"ClassNameThatIsNoText",
                archiveWith(uid(3), {object({{"$class", uid(4)}}), object({{"$classname", integer(1)}})}), asObject,
                "has no class"},
        Refusal{"TextAsList", archiveWith(uid(3), {text("a")}), asList, "no \"NSMutableArray\""},
        Refusal{"ObjectAsList", archiveWith(uid(3), {object({{"$class", uid(4)}}), classObject("Color")}), asList,
                "class \"Color\" where one of class \"NSMutableArray\""},
        Refusal{"ListWithoutEntries", archiveWith(uid(3), {object({{"$class", uid(4)}}), listClass()}), asList,
                "\"NS.objects\" is no list"},
        Refusal{"EntriesThatAreText", listOf(text("a")), asList, "\"NS.objects\" is no list"},
        Refusal{"EntryThatIsNull", listOf(PropertyList(Array{uid(5), uid(0)})), asList, "an entry without an object"},
        Refusal{"EntryThatIsInteger", listOf(PropertyList(Array{integer(5)})), asList,
                "\"NS.objects\" is no reference"},
        Refusal{"EntryOutsideTheTable", listOf(PropertyList(Array{uid(5), uid(7)})), asList, "not there"},
        Refusal{"EntryOfAnotherClass", listOf(PropertyList(Array{uid(1)})), asList, "contains itself"},
        Refusal{"EntryThatIsTheList", listOf(PropertyList(Array{uid(3)})), asList, "contains itself"},
        Refusal{"LocationOfTheNet", location("http://example.org/a"), asLocation, "none of a file"},
        Refusal{"LocationOfAnotherHost", location("file://host/a"), asLocation, "none of a file"},
        Refusal{"LocationWithWrongPercent", location("file:///a%4"), asLocation, "none of a file"},
        Refusal{"LocationWithWrongDigits", location("file:///a%zz"), asLocation, "none of a file"},
        Refusal{"LocationWithNul", location("file:///a%00b"), asLocation, "none of a file"},
        Refusal{"LocationRelativeToAnother", location("a", uid(4)), asLocation, "relative to another"},
        Refusal{"LocationRelativeToAnObject", location("a", uid(6), {{"$class", uid(5)}}), asLocation,
                "class \"NSURL\" where"}),
    [](const auto& row) { return row.param.name; });

Array plainTable() {
    return {text("$null"), object({{"$class", uid(2)}}), classObject("Thread")};
}
PropertyList archiveOf(std::vector<Entry> entries) {
    return object(std::move(entries));
}
const Entry versionEntry{"$version", integer(100000)};
const Entry archiverEntry{"$archiver", text("NSKeyedArchiver")};
const Entry topEntry{"$top", object({{"root", uid(1)}})};
const Entry objectsEntry{"$objects", PropertyList(plainTable())};

INSTANTIATE_TEST_SUITE_P(
    Archives, KeyedUnarchiverRefusal,
    testing::Values(
        Refusal{"NoDictionary", PropertyList(plainTable()), decodeNothing, "no keyed archive"},
        Refusal{"EmptyDictionary", object({}), decodeNothing, "no keyed archive"},
        Refusal{"OtherArchiver",
                archiveOf({versionEntry, {"$archiver", text("NRKeyedArchiver")}, topEntry, objectsEntry}),
                decodeNothing, "no keyed archive"},
        Refusal{"NoVersion", archiveOf({archiverEntry, topEntry, objectsEntry}), decodeNothing, "version"},
        Refusal{"OtherVersion", archiveOf({{"$version", integer(1)}, archiverEntry, topEntry, objectsEntry}),
                decodeNothing, "version"},
        Refusal{"NoTop", archiveOf({versionEntry, archiverEntry, objectsEntry}), decodeNothing, "no \"$top\""},
        Refusal{"TopThatIsAnArray",
                archiveOf({versionEntry, archiverEntry, {"$top", PropertyList(Array())}, objectsEntry}), decodeNothing,
                "no \"$top\""},
        Refusal{"TopWithoutRoot", archiveOf({versionEntry, archiverEntry, {"$top", object({})}, objectsEntry}),
                decodeNothing, "no object"},
        Refusal{"NoObjects", archiveOf({versionEntry, archiverEntry, topEntry}), decodeNothing, "no \"$objects\""},
        Refusal{"ObjectsThatAreText", archiveOf({versionEntry, archiverEntry, topEntry, {"$objects", text("a")}}),
                decodeNothing, "no \"$objects\""},
        Refusal{"EmptyTable", archive({}), decodeNothing, "not there"},
        Refusal{"RootOutsideTheTable", archive(plainTable(), uid(3)), decodeNothing, "not there"},
        Refusal{"RootThatIsNull", archive(plainTable(), uid(0)), decodeNothing, "no object"},
        Refusal{"RootThatIsText", archive({text("$null"), text("a")}), decodeNothing, "no \"Thread\""},
        Refusal{"RootInPlace", archive(plainTable(), object({})), decodeNothing, "\"root\" is no reference"},
        Refusal{"RootOfAnotherClass", archive({text("$null"), object({{"$class", uid(2)}}), classObject("Hoop")}),
                decodeNothing, "class \"Hoop\" where one of class \"Thread\""}),
    [](const auto& row) { return row.param.name; });

TEST(KeyedUnarchiver, RefusesBytesThatAreNoList) {
    EXPECT_THAT(refusalOf({}, decodeNothing), HasSubstr("no property list"));
    EXPECT_THAT(refusalOf({'h', 'i'}, decodeNothing), HasSubstr("no property list"));
}

TEST(KeyedUnarchiver, RefusesObjectsThatContainEachOther) {
    const Array others{object({{"key", uid(4)}, {"$class", uid(5)}}), object({{"key", uid(3)}, {"$class", uid(5)}}),
                       classObject("Color")};
    int depth = 0;
    KeyedUnarchiver::Body follow = [&](KeyedUnarchiver& object) {
        ++depth;
        object.decodeObject("key", "Color", follow);
    };
    EXPECT_THAT(refusalOf(binaryPropertyList(archiveWith(uid(3), others)), follow), HasSubstr("contains itself"));
    EXPECT_EQ(depth, 3);
}

TEST(KeyedUnarchiver, AnObjectMayBeShared) {
    const Array others{object({{"NS.objects", PropertyList(Array{uid(5), uid(5)})}, {"$class", uid(4)}}),
                       classObject("NSArray"), object({{"red", real(0.5)}, {"$class", uid(6)}}), classObject("Color")};
    int count = 0;
    decode(binaryPropertyList(archiveWith(uid(3), others)), [&](KeyedUnarchiver& root) {
        root.decodeList(
            "key", "Color", [](std::size_t) {},
            [&](KeyedUnarchiver& color) {
                EXPECT_EQ(color.decodeFloat("red"), 0.5F);
                ++count;
            });
    });
    EXPECT_EQ(count, 2);
}

TEST(KeyedUnarchiver, ReadsChangeableTexts) {
    const auto list = archiveWith(uid(3), {object({{"NS.string", text("rose")}, {"$class", uid(4)}}),
                                           classObject("NSMutableString", {"NSString", "NSObject"})});
    decode(binaryPropertyList(list), [](KeyedUnarchiver& root) { EXPECT_EQ(root.decodeText("key"), "rose"); });
}

struct LocationRow {
    const char* name;
    const char* url;
    const char* path;
};
class KeyedUnarchiverLocation : public testing::TestWithParam<LocationRow> {};
TEST_P(KeyedUnarchiverLocation, GivesTheRow) {
    decode(binaryPropertyList(location(GetParam().url)),
           [](KeyedUnarchiver& root) { EXPECT_EQ(root.decodeLocation("key"), GetParam().path); });
}
INSTANTIATE_TEST_SUITE_P(Rows, KeyedUnarchiverLocation,
                         testing::Values(LocationRow{"NoHost", "file:///a/b", "/a/b"},
                                         LocationRow{"ThisHost", "file://localhost/a", "/a"},
                                         LocationRow{"PathOnly", "file:/a", "/a"},
                                         LocationRow{"LowerCasePercent", "file:///%c3%a9", "/\u00E9"},
                                         LocationRow{"UnescapedMarks", "file:///a,(b)+c", "/a,(b)+c"},
                                         LocationRow{"Relative", "a/b:c", "a/b:c"}),
                         [](const auto& row) { return row.param.name; });

// Hostile input
// --------------------------------------------------------------------------------------------------------

TEST(KeyedUnarchiver, RefusesALongTextSharedByManyObjects) {
    Array entries(20000, uid(5));
    const Array others{object({{"NS.objects", PropertyList(std::move(entries))}, {"$class", uid(4)}}), listClass(),
                       object({{"name", uid(7)}, {"$class", uid(6)}}), classObject("Color"),
                       text(std::string(100000, 'x'))};
    std::size_t decoded = 0;
    const auto body = [&](KeyedUnarchiver& root) {
        root.decodeList(
            "key", "Color", [](std::size_t) {},
            [&](KeyedUnarchiver& color) { decoded += color.decodeText("name").value_or("").size(); });
    };
    const auto bytes = binaryPropertyList(archiveWith(uid(3), others));
    EXPECT_THAT(refusalOf(bytes, body), HasSubstr("unfolds"));
    EXPECT_LT(decoded, 64 * bytes.size());
}

TEST(KeyedUnarchiver, RefusesManyKeysSharedByManyObjects) {
    std::vector<Entry> keys;
    keys.reserve(10001);
    for (int i = 0; i < 10000; ++i) keys.emplace_back("k" + std::to_string(i), integer(0));
    keys.emplace_back("$class", uid(6));
    const Array others{object({{"NS.objects", PropertyList(Array(10000, uid(5)))}, {"$class", uid(4)}}), listClass(),
                       object(std::move(keys)), classObject("Color")};
    const auto body = [&](KeyedUnarchiver& root) {
        root.decodeList(
            "key", "Color", [](std::size_t) {}, [&](KeyedUnarchiver& color) { (void)color.decodeFloat("x"); });
    };
    EXPECT_THAT(refusalOf(binaryPropertyList(archiveWith(uid(3), others)), body), HasSubstr("unfolds"));
}

// Crawls where the time of an object grows with the number of those before it.
TEST(KeyedArchive, LongListsTakeLinearTime) {
    const std::size_t count = 100000;
    const auto bytes = KeyedArchiver::archiveRoot(
        "Thread", [](KeyedArchiver& root) { root.encodeList("key", "Stitch", count, encodeStitch); });
    std::size_t decoded = 0;
    decode(bytes, [&](KeyedUnarchiver& root) {
        root.decodeList(
            "key", "Stitch", [count](std::size_t announced) { EXPECT_EQ(announced, count); },
            [&](KeyedUnarchiver& stitch) {
                ASSERT_EQ(stitch.decodeFloat("X"), static_cast<float>(decoded) + 0.1F);
                ++decoded;
            });
    });
    EXPECT_EQ(decoded, count);
}

void decodeDesign(KeyedUnarchiver& design) {
    design.decodeList(
        "Stitches", "Stitch", [](std::size_t count) { EXPECT_LT(count, 10000U); },
        [](KeyedUnarchiver& stitch) {
            (void)stitch.decodeFloat("X");
            (void)stitch.decodeBool("IsJump");
        });
    (void)design.decodeText("Name");
    (void)design.decodeText("Type");
    (void)design.decodeLocation("Location");
    design.decodeObject("Hoop", "Hoop", [](KeyedUnarchiver& hoop) { (void)hoop.decodeInteger("Code"); });
    (void)design.decodeInteger("Version");
    (void)design.decodeBool("IsShown");
}

bool isReadable(std::span<const std::uint8_t> bytes) {
    try {
        KeyedUnarchiver::unarchiveRoot(bytes, "Design", decodeDesign);
        return true;
    } catch (const KeyedArchiveError& error) {
        EXPECT_STRNE(error.what(), "");
        return false;
    }
}

TEST(KeyedUnarchiver, RefusesEveryPrefix) {
    auto xml = KeyedArchiver::archiveRoot("Design", encodeDesign);
    const auto binary = binaryPropertyList(*parsePropertyList(xml));
    xml.pop_back();  // the archive is whole without the last line's end
    for (const auto& whole : {binary, xml}) {
        for (std::size_t length = 0; length < whole.size(); ++length)
            EXPECT_FALSE(isReadable(std::span(whole).first(length)));
        EXPECT_TRUE(isReadable(whole));
    }
}

TEST(KeyedUnarchiver, SurvivesSeededMutations) {
    const auto xml = KeyedArchiver::archiveRoot("Design", encodeDesign);
    const auto binary = binaryPropertyList(*parsePropertyList(xml));
    std::mt19937 random(20240609);
    int readable = 0;
    for (const auto& whole : {binary, xml}) {
        for (int round = 0; round < 5000; ++round) {
            Bytes mutated = whole;
            for (auto count = 1 + random() % 3; count > 0; --count) {
                mutated[random() % mutated.size()] = static_cast<std::uint8_t>(random());
            }
            readable += isReadable(mutated) ? 1 : 0;
        }
    }
    EXPECT_GT(readable, 100);
}

}  // namespace
}  // namespace velamo
