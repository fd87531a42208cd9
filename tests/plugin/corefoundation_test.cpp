#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>
#include <velamo_plugin_registry.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "plugin/owned.h"

namespace velamo {
namespace {

Owned<CFStringRef> text(const char* bytes) {
    return Owned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, bytes, kCFStringEncodingUTF8));
}

Owned<CFNumberRef> number(Float32 value) {
    return own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat32Type, &value));
}

Owned<CFUUIDRef> uuid(const char* bytes) {
    return Owned<CFUUIDRef>(CFUUIDCreateFromString(kCFAllocatorDefault, text(bytes).get()));
}

TEST(References, AreCounted) {
    const auto string = text("rose");
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
    EXPECT_EQ(CFRetain(string.get()), string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2);
    CFRelease(string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(References, AreCountedAcrossThreads) {
    const auto string = text("rose");
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int count = 0; count < 8; ++count)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 10000; ++turn) {
                CFRetain(string.get());
                CFRelease(string.get());
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(References, OfConstantsNeverRunOut) {
    const CFStringRef constant = CFSTR("de_velamo_constant");
    EXPECT_GT(CFGetRetainCount(constant), 1000000);
    // NOLINTNEXTLINE(clang-analyzer-osx.cocoa.RetainCount): more releases than were owned, on purpose
    for (int count = 0; count < 3; ++count) CFRelease(constant);
    EXPECT_EQ(CFSTR("de_velamo_constant"), constant);
    EXPECT_TRUE(CFEqual(constant, text("de_velamo_constant").get()));
}

struct EncodingRow {
    const char* name;
    const char* bytes;
    bool isUtf8;
};
class Encoding : public testing::TestWithParam<EncodingRow> {};
TEST_P(Encoding, IsChecked) {
    const auto string = text(GetParam().bytes);
    ASSERT_EQ(string != nullptr, GetParam().isUtf8);
    if (!string) return;
    std::array<char, 32> buffer{};
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer.data(), buffer.size(), kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), GetParam().bytes);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Encoding,
    testing::Values(
        EncodingRow{"Empty", "", true}, EncodingRow{"Ascii", "rose", true},
        EncodingRow{"TwoBytes", "Bl\xC3\xBCte", true}, EncodingRow{"ThreeBytes", "\xE2\x9C\xBF", true},
        EncodingRow{"FourBytes", "\xF0\x9F\x8C\xB9", true}, EncodingRow{"LastCharacter", "\xF4\x8F\xBF\xBF", true},
        EncodingRow{"Latin1", "Bl\xFCte", false}, EncodingRow{"ContinuationAlone", "\x80", false},
        EncodingRow{"TwoBytesForAscii", "\xC1\xA1", false}, EncodingRow{"ThreeBytesForTwo", "\xE0\x9F\xBF", false},
        EncodingRow{"FourBytesForThree", "\xF0\x8F\xBF\xBF", false}, EncodingRow{"Surrogate", "\xED\xA0\x80", false},
        EncodingRow{"BeforeSurrogates", "\xED\x9F\xBF", true},
        EncodingRow{"PastTheLastCharacter", "\xF4\x90\x80\x80", false},
        EncodingRow{"CutAtTheEnd", "rose\xE2\x9C", false}, EncodingRow{"CutInTheMiddle", "\xE2\x9C rose", false}),
    [](const auto& row) { return row.param.name; });

TEST(Encoding, OthersAreRefused) {
    constexpr CFStringEncoding macRoman = 0;
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, "rose", macRoman), nullptr);
    std::array<char, 8> buffer{};
    EXPECT_FALSE(CFStringGetCString(text("rose").get(), buffer.data(), buffer.size(), macRoman));
}

TEST(Strings, FitWithTheirZeroOrNotAtAll) {
    const auto string = text("rose");
    std::array<char, 5> buffer{};
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer.data(), 4, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), 4));
    EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), -1));
    EXPECT_EQ(std::string(buffer.data()), "");
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer.data(), 5, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), "rose");
}

TEST(Paths, KeepAnyBytes) {
    std::string path = "/";
    for (int byte = 1; byte < 256; ++byte) path += static_cast<char>(byte);
    const auto string = own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, path.c_str()));
    const CFIndex size = CFStringGetMaximumSizeOfFileSystemRepresentation(string.get());
    ASSERT_GE(size, static_cast<CFIndex>(path.size() + 1));
    std::string copy(static_cast<std::size_t>(size), '\0');
    ASSERT_TRUE(CFStringGetFileSystemRepresentation(string.get(), copy.data(), size));
    EXPECT_STREQ(copy.c_str(), path.c_str());
    EXPECT_FALSE(CFStringGetCString(string.get(), copy.data(), size, kCFStringEncodingUTF8));
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
    const auto dictionary = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, nullptr, nullptr));
    EXPECT_EQ(CFGetTypeID(dictionary.get()), CFDictionaryGetTypeID());
}

TEST(Numbers, KeepTheirTypeAndValue) {
    const auto single = number(123.4F);
    EXPECT_EQ(CFNumberGetType(single.get()), kCFNumberFloat32Type);
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
    EXPECT_EQ(CFNumberGetType(wide.get()), kCFNumberFloat64Type);
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
    EXPECT_TRUE(CFNumberGetValue(none.get(), kCFNumberFloat32Type, &value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(Numbers, OfOtherTypesAreRefused) {
    constexpr CFNumberType integer = 3;
    const SInt32 one = 1;
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, integer, &one), nullptr);
    SInt32 value = 7;
    EXPECT_FALSE(CFNumberGetValue(number(1).get(), integer, &value));
    EXPECT_EQ(value, 7);
}

TEST(Dictionaries, FindEqualKeysAndHoldWhatIsInThem) {
    auto dictionary = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                    &kCFTypeDictionaryValueCallBacks));
    const auto key = text("width");
    const auto one = number(1);
    const auto two = number(2);
    CFDictionarySetValue(dictionary.get(), key.get(), one.get());
    EXPECT_EQ(CFGetRetainCount(key.get()), 2);
    EXPECT_EQ(CFGetRetainCount(one.get()), 2);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), text("width").get()), one.get());
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), text("height").get()), nullptr);

    CFDictionarySetValue(dictionary.get(), text("width").get(), two.get());
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    EXPECT_EQ(CFGetRetainCount(key.get()), 2) << "the key that is there stays";
    EXPECT_EQ(CFGetRetainCount(one.get()), 1);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), two.get());

    CFDictionarySetValue(dictionary.get(), key.get(), two.get());
    EXPECT_EQ(CFGetRetainCount(two.get()), 2) << "the same value again";
    dictionary.reset();
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(two.get()), 1);
}

TEST(Dictionaries, GiveUpWhatIsRemoved) {
    const auto dictionary = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                          &kCFTypeDictionaryValueCallBacks));
    const auto key = text("width");
    const auto value = number(1);
    CFDictionarySetValue(dictionary.get(), key.get(), value.get());
    CFDictionaryRemoveValue(dictionary.get(), text("height").get());
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    CFDictionaryRemoveValue(dictionary.get(), text("width").get());
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
}

TEST(Dictionaries, WithoutCallBacksTakePointers) {
    const auto dictionary = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, nullptr, nullptr));
    const auto key = text("width");
    const auto value = number(1);
    CFDictionarySetValue(dictionary.get(), key.get(), value.get());
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), value.get());
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), text("width").get()), nullptr);
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

TEST(Uuids, ConstantsAreOneObject) {
    const auto constant = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                              last);
    };
    EXPECT_EQ(constant(16), constant(16));
    EXPECT_NE(constant(16), constant(17));
    EXPECT_TRUE(CFEqual(constant(16), uuid("01020304-0506-0708-090A-0B0C0D0E0F10").get()));
}

TEST(Uuids, OfOtherShapesAreRefused) {
    for (const char* other : {"", "8B08C4BF-415B-11D8-B3F9-0003936726F", "8B08C4BF-415B-11D8-B3F9-0003936726FCC",
                              "8B08C4BF 415B-11D8-B3F9-0003936726FC", "8B08C4BF415B-11D8-B3F9-0003936726FC-",
                              "8B08C4BF-415B-11D8-B3F9-0003936726FG", "8B08C4BF-415B-11D8-B3F9-0003936726-1",
                              "{B08C4BF-415B-11D8-B3F9-0003936726F}"})
        EXPECT_EQ(uuid(other), nullptr) << other;
}

TEST(PluginRegistry, CountsTheInstancesOfAFactory) {
    const auto factory = uuid("5A3A0D1C-7B0A-4A5E-9D57-2D0B3A6C1E11");
    const auto same = uuid("5A3A0D1C-7B0A-4A5E-9D57-2D0B3A6C1E11");
    const CFIndex before = VelamoPlugInInstanceCount();
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(factory.get()), 0);
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInAddInstanceForFactory(same.get());
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(factory.get()), 2);
    EXPECT_EQ(VelamoPlugInInstanceCount(), before + 2);
    for (int count = 0; count < 3; ++count) CFPlugInRemoveInstanceForFactory(factory.get());
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(factory.get()), 0) << "one removal too many takes nothing away";
    CFPlugInAddInstanceForFactory(factory.get());
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(same.get()), 1);
    CFPlugInRemoveInstanceForFactory(factory.get());
    EXPECT_EQ(VelamoPlugInInstanceCount(), before);
}

}  // namespace
}  // namespace velamo
