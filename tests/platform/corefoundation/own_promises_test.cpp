// What our own CoreFoundation promises beyond what it shares with Apple's: it refuses what Apple's would take in some
// other way, and can be asked what Apple's keeps to itself.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>
#include <velamo_plugin_registry.h>

#include <array>
#include <limits>
#include <string>

#include "tests/support/corefoundation.h"

namespace velamo {
namespace {

using test::emptyDictionary;
using test::EncodingRow;
using test::number;
using test::text;
using test::uuid;

TEST(OwnReferences, AreCountedForEveryObject) {
    const auto string = text("rose");
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
    const auto dictionary = emptyDictionary();
    CFDictionarySetValue(dictionary.get(), string.get(), number(1).get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2);
    EXPECT_EQ(CFGetRetainCount(CFDictionaryGetValue(dictionary.get(), string.get())), 1);
    const auto same = text("rose");
    CFDictionarySetValue(dictionary.get(), same.get(), number(2).get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2) << "the key that is there stays";
    EXPECT_EQ(CFGetRetainCount(same.get()), 1);
    CFDictionaryRemoveValue(dictionary.get(), same.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(OwnReferences, OfConstantsNeverRunOut) {
    const CFStringRef constant = CFSTR("de_velamo_constant");
    EXPECT_GT(CFGetRetainCount(constant), 1000000);
    // NOLINTNEXTLINE(clang-analyzer-osx.cocoa.RetainCount): more releases than were owned, on purpose
    for (int count = 0; count < 3; ++count) CFRelease(constant);
    EXPECT_EQ(CFSTR("de_velamo_constant"), constant);
    EXPECT_TRUE(CFEqual(constant, text("de_velamo_constant").get()));
}

class OwnEncoding : public testing::TestWithParam<EncodingRow> {};
TEST_P(OwnEncoding, IsStrict) {
    test::expectText(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Rows, OwnEncoding,
                         testing::Values(EncodingRow{"LastCharacter", "\xF4\x8F\xBF\xBF", true},
                                         EncodingRow{"PastTheLastCharacter", "\xF4\x90\x80\x80", false},
                                         EncodingRow{"TwoBytesForAscii", "\xC1\xA1", false},
                                         EncodingRow{"ThreeBytesForTwo", "\xE0\x9F\xBF", false},
                                         EncodingRow{"FourBytesForThree", "\xF0\x8F\xBF\xBF", false},
                                         EncodingRow{"Surrogate", "\xED\xA0\x80", false},
                                         EncodingRow{"CutInTheMiddle", "\xE2\x9C rose", false}),
                         [](const auto& row) { return row.param.name; });

TEST(OwnEncoding, OthersAreRefused) {
    constexpr CFStringEncoding macRoman = 0;
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, "rose", macRoman), nullptr);
    std::array<char, 8> buffer{};
    EXPECT_FALSE(CFStringGetCString(text("rose").get(), buffer.data(), buffer.size(), macRoman));
}

TEST(OwnStrings, WriteNothingThatDoesNotFit) {
    const auto string = text("rose");
    std::array<char, 5> buffer{};
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer.data(), 4, kCFStringEncodingUTF8));
    for (const CFIndex size : {4, 0, -1})
        EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), size)) << size;
    EXPECT_EQ(std::string(buffer.data()), "");
}

TEST(OwnPaths, KeepAnyBytes) {
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

TEST(OwnNumbers, KeepTheirType) {
    EXPECT_EQ(CFNumberGetType(number(123.4F).get()), kCFNumberFloat32Type);
    constexpr Float64 half = 0.5;
    const auto wide = own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &half));
    EXPECT_EQ(CFNumberGetType(wide.get()), kCFNumberFloat64Type);
}

TEST(OwnNumbers, LoseNothingOfWhatIsNoNumber) {
    Float32 value = 0;
    const auto none = number(std::numeric_limits<Float32>::quiet_NaN());
    EXPECT_TRUE(CFNumberGetValue(none.get(), kCFNumberFloat32Type, &value));
}

TEST(OwnNumbers, OfOtherTypesAreRefused) {
    const SInt32 one = 1;
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &one), nullptr);
    SInt32 value = 7;
    EXPECT_FALSE(CFNumberGetValue(number(1).get(), kCFNumberSInt32Type, &value));
    EXPECT_EQ(value, 7);
}

TEST(OwnUuids, ConstantsAreOneObject) {
    const auto constant = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                              last);
    };
    EXPECT_EQ(constant(16), constant(16));
    EXPECT_NE(constant(16), constant(17));
}

TEST(OwnUuids, OfOtherShapesAreRefused) {
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
