// What the plug-in and its host rest on. Our CoreFoundation and Apple's both do all of it, so these tests hold with
// either; what ours promises beyond that is tested beside it.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/corefoundation.h"

namespace velamo {
namespace {

using test::emptyDictionary;
using test::EncodingRow;
using test::number;
using test::text;
using test::uuid;

/// Something that knows how often dictionaries hold it, and is equal to others of its name.
struct Thing {
    explicit Thing(CFHashCode itsName) : name(itsName) {}

    static const Thing& of(const void* thing) { return *static_cast<const Thing*>(thing); }
    static const void* hold(CFAllocatorRef, const void* thing) {
        ++of(thing).holders;
        return thing;
    }
    static void letGo(CFAllocatorRef, const void* thing) { --of(thing).holders; }
    static Boolean isEqual(const void* one, const void* other) { return of(one).name == of(other).name; }
    static CFHashCode hash(const void* thing) { return of(thing).name; }

    const CFHashCode name;
    mutable int holders = 0;
};

Owned<CFMutableDictionaryRef> dictionaryOfThings() {
    constexpr CFDictionaryKeyCallBacks keys{0, Thing::hold, Thing::letGo, nullptr, Thing::isEqual, Thing::hash};
    constexpr CFDictionaryValueCallBacks values{0, Thing::hold, Thing::letGo, nullptr, Thing::isEqual};
    return own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &keys, &values));
}

/// An object that holds the thing as long as it lives itself.
Owned<CFMutableDictionaryRef> holderOf(const Thing& thing) {
    constexpr CFDictionaryValueCallBacks values{0, Thing::hold, Thing::letGo, nullptr, nullptr};
    auto holder = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, nullptr, &values));
    CFDictionarySetValue(holder.get(), &thing, &thing);
    return holder;
}

TEST(References, KeepAnObjectUntilTheLastIsGivenBack) {
    const Thing thing(1);
    auto object = holderOf(thing);
    EXPECT_EQ(CFRetain(object.get()), object.get());
    EXPECT_EQ(CFGetRetainCount(object.get()), 2);
    CFRelease(object.get());
    EXPECT_EQ(CFGetRetainCount(object.get()), 1);
    EXPECT_EQ(thing.holders, 1);
    object.reset();
    EXPECT_EQ(thing.holders, 0);
}

TEST(References, AreCountedAcrossThreads) {
    const Thing thing(1);
    auto object = holderOf(thing);
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int count = 0; count < 8; ++count)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 10000; ++turn) {
                CFRetain(object.get());
                CFRelease(object.get());
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(object.get()), 1);
    object.reset();
    EXPECT_EQ(thing.holders, 0);
}

TEST(References, OfConstantsAreForEveryone) {
    const CFStringRef constant = CFSTR("de_velamo_constant");
    for (int count = 0; count < 3; ++count) {
        CFRetain(constant);
        CFRelease(constant);
    }
    EXPECT_TRUE(CFEqual(constant, text("de_velamo_constant").get()));
    EXPECT_TRUE(CFEqual(constant, CFSTR("de_velamo_constant")));
}

class Encoding : public testing::TestWithParam<EncodingRow> {};
TEST_P(Encoding, IsChecked) {
    test::expectText(GetParam());
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Encoding,
    testing::Values(EncodingRow{"Empty", "", true}, EncodingRow{"Ascii", "rose", true},
                    EncodingRow{"TwoBytes", "Bl\xC3\xBCte", true}, EncodingRow{"ThreeBytes", "\xE2\x9C\xBF", true},
                    EncodingRow{"BeforeSurrogates", "\xED\x9F\xBF", true},
                    EncodingRow{"FourBytes", "\xF0\x9F\x8C\xB9", true}, EncodingRow{"Latin1", "Bl\xFCte", false},
                    EncodingRow{"ContinuationAlone", "\x80", false}, EncodingRow{"CutAtTheEnd", "rose\xE2\x9C", false}),
    [](const auto& row) { return row.param.name; });

TEST(Strings, FitWithTheirZeroOrNotAtAll) {
    const auto string = text("rose");
    std::array<char, 5> buffer{};
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer.data(), 4, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), 4));
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer.data(), 5, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), "rose");
}

TEST(Paths, OfPlainLettersStayAsTheyAre) {
    const std::string path = "/Users/rose/two words, 100% \"new\".dst";
    const auto string = own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, path.c_str()));
    const CFIndex size = CFStringGetMaximumSizeOfFileSystemRepresentation(string.get());
    ASSERT_GE(size, static_cast<CFIndex>(path.size() + 1));
    std::string copy(static_cast<std::size_t>(size), '\0');
    ASSERT_TRUE(CFStringGetFileSystemRepresentation(string.get(), copy.data(), size));
    EXPECT_EQ(copy.c_str(), path);
    ASSERT_TRUE(CFStringGetCString(string.get(), copy.data(), size, kCFStringEncodingUTF8));
    EXPECT_EQ(copy.c_str(), path);
}

TEST(Equality, IsByValueWithinAType) {
    EXPECT_TRUE(CFEqual(text("rose").get(), text("rose").get()));
    EXPECT_EQ(CFHash(text("rose").get()), CFHash(text("rose").get()));
    EXPECT_FALSE(CFEqual(text("rose").get(), text("Rose").get()));
    EXPECT_TRUE(CFEqual(number(0.5F).get(), number(0.5F).get()));
    EXPECT_EQ(CFHash(number(0.5F).get()), CFHash(number(0.5F).get()));
    EXPECT_FALSE(CFEqual(number(0.5F).get(), number(1).get()));
    EXPECT_FALSE(CFEqual(text("1").get(), number(1).get()));
}

TEST(Types, HaveTheirIdentifiers) {
    EXPECT_EQ(CFGetTypeID(text("rose").get()), CFStringGetTypeID());
    EXPECT_EQ(CFGetTypeID(number(1).get()), CFNumberGetTypeID());
    EXPECT_EQ(CFGetTypeID(uuid("8B08C4BF-415B-11D8-B3F9-0003936726FC").get()), CFUUIDGetTypeID());
    EXPECT_EQ(CFGetTypeID(emptyDictionary().get()), CFDictionaryGetTypeID());
}

TEST(Numbers, KeepTheirValue) {
    const auto single = number(123.4F);
    Float32 value = 0;
    EXPECT_TRUE(CFNumberGetValue(single.get(), kCFNumberFloat32Type, &value));
    EXPECT_EQ(value, 123.4F);
    Float64 wide = 0;
    EXPECT_TRUE(CFNumberGetValue(single.get(), kCFNumberFloat64Type, &wide));
    EXPECT_EQ(wide, double{123.4F});
}

TEST(Numbers, SayWhenNarrowingLoses) {
    constexpr Float64 third = 1.0 / 3;
    const auto wide = own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &third));
    Float32 value = 0;
    EXPECT_FALSE(CFNumberGetValue(wide.get(), kCFNumberFloat32Type, &value));
    EXPECT_EQ(value, static_cast<Float32>(third));
    constexpr Float64 half = 0.5;
    const auto exact = own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &half));
    EXPECT_TRUE(CFNumberGetValue(exact.get(), kCFNumberFloat32Type, &value));
    EXPECT_EQ(value, 0.5F);
}

TEST(Numbers, KeepWhatIsNoNumber) {
    const auto none = number(std::numeric_limits<Float32>::quiet_NaN());
    Float32 value = 0;
    CFNumberGetValue(none.get(), kCFNumberFloat32Type, &value);
    EXPECT_TRUE(std::isnan(value));
}

TEST(Dictionaries, FindEqualKeysAndHoldWhatIsInThem) {
    const Thing key(1);
    const Thing equalKey(1);
    const Thing otherKey(2);
    const Thing one(11);
    const Thing two(12);
    auto dictionary = dictionaryOfThings();
    CFDictionarySetValue(dictionary.get(), &key, &one);
    EXPECT_EQ(key.holders, 1);
    EXPECT_EQ(one.holders, 1);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &equalKey), &one);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &otherKey), nullptr);

    CFDictionarySetValue(dictionary.get(), &equalKey, &two);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    EXPECT_EQ(key.holders + equalKey.holders, 1) << "one of them is enough";
    EXPECT_EQ(one.holders, 0);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &key), &two);

    CFDictionarySetValue(dictionary.get(), &key, &two);
    EXPECT_EQ(two.holders, 1) << "the same value again";
    dictionary.reset();
    EXPECT_EQ(key.holders + equalKey.holders, 0);
    EXPECT_EQ(two.holders, 0);
}

TEST(Dictionaries, GiveUpWhatIsRemoved) {
    const Thing key(1);
    const Thing value(11);
    const auto dictionary = dictionaryOfThings();
    CFDictionarySetValue(dictionary.get(), &key, &value);
    const Thing otherKey(2);
    CFDictionaryRemoveValue(dictionary.get(), &otherKey);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    const Thing equalKey(1);
    CFDictionaryRemoveValue(dictionary.get(), &equalKey);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
    EXPECT_EQ(key.holders, 0);
    EXPECT_EQ(value.holders, 0);
}

TEST(Dictionaries, RetainObjects) {
    const Thing thing(1);
    auto dictionary = emptyDictionary();
    for (const char* key : {"width", "height"})
        CFDictionarySetValue(dictionary.get(), text(key).get(), number(1).get());
    CFDictionarySetValue(dictionary.get(), text("width").get(), holderOf(thing).get());
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 2) << "texts are keys by their value";
    EXPECT_EQ(thing.holders, 1);
    const Owned<CFTypeRef> value(CFRetain(CFDictionaryGetValue(dictionary.get(), CFSTR("width"))));
    CFDictionaryRemoveValue(dictionary.get(), CFSTR("width"));
    EXPECT_EQ(thing.holders, 1) << "it has another owner";
    CFDictionarySetValue(dictionary.get(), CFSTR("height"), value.get());
    EXPECT_EQ(CFGetRetainCount(value.get()), 2);
    dictionary.reset();
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
}

TEST(Dictionaries, WithoutCallBacksTakePointers) {
    const Thing key(1);
    const Thing equalKey(1);
    const Thing value(11);
    const auto dictionary = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, nullptr, nullptr));
    CFDictionarySetValue(dictionary.get(), &key, &value);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &key), &value);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &equalKey), nullptr);
    EXPECT_EQ(key.holders + value.holders, 0);
}

TEST(Uuids, AreTheirSixteenBytes) {
    const auto fromText = uuid("8B08C4BF-415B-11D8-B3F9-0003936726FC");
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(fromText.get());
    EXPECT_EQ(bytes.byte0, 0x8B);
    EXPECT_EQ(bytes.byte4, 0x41);
    EXPECT_EQ(bytes.byte9, 0xF9);
    EXPECT_EQ(bytes.byte15, 0xFC);
    const auto fromBytes = own(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, bytes));
    EXPECT_TRUE(CFEqual(fromText.get(), fromBytes.get()));
    EXPECT_EQ(CFHash(fromText.get()), CFHash(fromBytes.get()));
    EXPECT_TRUE(CFEqual(fromText.get(), uuid("8b08c4bf-415b-11d8-b3f9-0003936726fc").get()));
    EXPECT_FALSE(CFEqual(fromText.get(), uuid("8B08C4BF-415B-11D8-B3F9-0003936726FD").get()));
}

TEST(Uuids, AreConstantsAsWell) {
    const auto constant = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                              last);
    };
    EXPECT_TRUE(CFEqual(constant(16), constant(16)));
    EXPECT_FALSE(CFEqual(constant(16), constant(17)));
    EXPECT_TRUE(CFEqual(constant(16), uuid("01020304-0506-0708-090A-0B0C0D0E0F10").get()));
}

}  // namespace
}  // namespace velamo
