#include "velamo/formats/byte_reader.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/bytes.h"

namespace velamo {
namespace {

using test::Bytes;
using test::bytes;

const Bytes six = bytes(0x81, 0x02, 0xF3, 0x04, 0xFF, 0x06);

TEST(ByteReader, TakesNumbersInTheirOrder) {
    EXPECT_EQ(ByteReader(six).u8(), 0x81);
    EXPECT_EQ(ByteReader(six).i8(), -0x7F);
    EXPECT_EQ(ByteReader(six).u16(), 0x0281);
    EXPECT_EQ(ByteReader(six, 3).i16(), -0xFC);
    EXPECT_EQ(ByteReader(six).u24(), 0xF30281U);
    EXPECT_EQ(ByteReader(six).i32(), 0x04F30281);
    EXPECT_EQ(ByteReader(six, 1).i32(), -0xFB0CFE);
    EXPECT_EQ(ByteReader(six).u16be(), 0x8102);
    EXPECT_EQ(ByteReader(six).i32be(), -0x7EFD0CFC);
}

TEST(ByteReader, GoesOnBehindWhatItTook) {
    ByteReader in(six);
    EXPECT_EQ(in.u8(), 0x81);
    EXPECT_EQ(in.u16(), 0xF302);
    in.skip(1);
    EXPECT_EQ(in.remaining(), 2U);
    EXPECT_EQ(in.rest()[0], 0xFF);
    EXPECT_EQ(in.take(2)[1], 0x06);
    EXPECT_EQ(in.remaining(), 0U);
    EXPECT_TRUE(in.ok());
    EXPECT_EQ(in.take(0).size(), 0U);
    EXPECT_TRUE(in.ok());
}

TEST(ByteReader, GivesZeroAndNothingMoreWhenItDoesNotFit) {
    ByteReader in(six);
    in.skip(4);
    EXPECT_EQ(in.i32(), 0);
    EXPECT_FALSE(in.ok());
    // The two bytes that were left are gone.
    EXPECT_EQ(in.remaining(), 0U);
    EXPECT_EQ(in.u8(), 0);
    EXPECT_EQ(in.take(0).size(), 0U);
    in.skip(0);
    EXPECT_FALSE(in.ok());
}

TEST(ByteReader, TakesNoMoreThanThereIs) {
    for (const std::size_t count : {std::size_t{7}, std::numeric_limits<std::size_t>::max()}) {
        ByteReader in(six);
        EXPECT_TRUE(in.take(count).empty());
        EXPECT_FALSE(in.ok());
    }
}

TEST(ByteReader, StartsNowhereOutside) {
    EXPECT_TRUE(ByteReader(six, 6).ok());
    for (const std::int64_t offset : {std::int64_t{7}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max(),
                                      std::numeric_limits<std::int64_t>::min()}) {
        ByteReader in(six, offset);
        EXPECT_FALSE(in.ok()) << offset;
        EXPECT_EQ(in.u8(), 0);
    }
}

TEST(ByteReader, SkipsForwardOnly) {
    ByteReader in(six, 3);
    in.skip(-1);
    EXPECT_FALSE(in.ok());
    EXPECT_EQ(in.remaining(), 0U);
}

TEST(SignedByte, IsTheNumberOfEightBits) {
    EXPECT_EQ(signedByte(0), 0.0F);
    EXPECT_EQ(signedByte(127), 127.0F);
    EXPECT_EQ(signedByte(128), -128.0F);
    EXPECT_EQ(signedByte(255), -1.0F);
}

}  // namespace
}  // namespace velamo
