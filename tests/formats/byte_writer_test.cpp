#include "velamo/formats/byte_writer.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/bytes.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;

TEST(ByteWriter, PutsNumbersWithTheLowestByteFirst) {
    ByteWriter out;
    out.u8(0x01);
    out.u16(0x0302);
    out.u24(0x060504);
    out.u32(0x0A090807);
    out.put(0x0F0E0D0C0B, 5);
    EXPECT_EQ(out.size(), 15U);
    EXPECT_EQ(out.take(), bytes(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    EXPECT_EQ(out.size(), 0U);
}

TEST(ByteWriter, KeepsTheLowerBitsOfWhatDoesNotFit) {
    ByteWriter out;
    out.u8(-1);
    out.u8(0x1FF);
    out.u16(-2);
    out.u24(0x7F000001);
    out.u32(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(out.take(), bytes(0xFF, 0xFF, 0xFE, 0xFF, 1, 0, 0, 0, 0, 0, 0));
}

TEST(ByteWriter, PutsTextsBytesAndFillings) {
    ByteWriter out;
    out.text({"a\0\xFF", 3});
    out.bytes(bytes(7, 8));
    out.fill(3, ' ');
    EXPECT_EQ(out.take(), bytes("a", 0, 0xFF, 7, 8, "   "));
}

TEST(ByteWriter, ReplacesBytesThatAreThere) {
    ByteWriter out;
    out.fill(6, 9);
    out.replace(1, 0x010203, 3);
    out.replace(5, -1, 1);
    EXPECT_EQ(out.take(), bytes(9, 3, 2, 1, 9, 0xFF));
}

TEST(ByteWriter, GrowsBeyondTheExpectedSize) {
    for (const std::size_t expected : {0U, 1U, 7U, 8U, 100U, 1000U}) {
        ByteWriter out(expected);
        for (int i = 0; i < 333; ++i) out.u24(i);
        const Bytes file = out.take();
        ASSERT_EQ(file.size(), 999U);
        for (std::size_t i = 0; i < 333; ++i) EXPECT_EQ(file[3 * i] | file[3 * i + 1] << 8, static_cast<int>(i));
    }
}

TEST(ByteWriter, PutsRecordsOfSeveralWidths) {
    for (const std::size_t expected : {0U, 5000U}) {
        std::vector<int> elements(1000);
        Bytes file;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            elements[i] = static_cast<int>(i);
            for (std::size_t byte = 0; byte <= i % 8; ++byte) file.push_back(static_cast<std::uint8_t>(i));
        }
        ByteWriter out(expected);
        out.u8(7);
        out.records(std::span<const int>(elements), [](int element) -> ByteRecord {
            constexpr std::uint64_t everyByte = 0x0101010101010101;
            return {everyByte * static_cast<std::uint8_t>(element), static_cast<std::size_t>(element % 8 + 1)};
        });
        EXPECT_EQ(out.size(), file.size() + 1);
        EXPECT_EQ(out.take(), bytes(7, file));
    }
}

TEST(ByteWriter, IsEmptyAtFirst) {
    EXPECT_EQ(ByteWriter(50).take(), Bytes());
}

}  // namespace
}  // namespace velamo
