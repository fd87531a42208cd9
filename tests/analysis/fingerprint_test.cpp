#include "velamo/analysis/fingerprint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/design_changes.h"
#include "tests/support/designs.h"
#include "velamo/analysis/same_path.h"

namespace velamo {
namespace {

using test::jump;
using test::stitch;

Fingerprint whole(const VLMDesign& design) {
    return fingerprintsOf(needlePathOf(design)).value().whole;
}

/// A square of 160 from the origin: upward, to the right and back.
const std::vector<VLMStitch> square{stitch(0, 160), stitch(160, 0), stitch(0, -160), stitch(-160, 0)};

TEST(Fingerprints, TellWhereThePathIs) {
    const Fingerprint fingerprint = whole(test::designOf(square));
    const double radius = std::sqrt(80 * 80 + 80 * 80 / 3.0);
    EXPECT_FLOAT_EQ(fingerprint.radius, static_cast<float>(radius));
    EXPECT_FLOAT_EQ(fingerprint.logOfLength, static_cast<float>(std::log(640 / radius)));
    EXPECT_EQ(fingerprint.points, 5U);
    EXPECT_EQ(fingerprint.corners, 3U);
    EXPECT_EQ(fingerprint.blocks, 1U);
    // Four windows of 40 a side; the middles are 20 and 60 from the middle of the side.
    const auto steps = [radius](double way) { return static_cast<std::int8_t>(std::lround(way / radius * 40)); };
    const std::int8_t far = steps(80);
    const std::vector<std::int8_t> across{steps(-60), steps(-20), steps(20), steps(60)};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(fingerprint.x[i], -far);
        EXPECT_EQ(fingerprint.y[i], across[i]);
        EXPECT_EQ(fingerprint.x[4 + i], across[i]);
        EXPECT_EQ(fingerprint.y[4 + i], far);
        EXPECT_EQ(fingerprint.x[8 + i], far);
        EXPECT_EQ(fingerprint.y[8 + i], -across[i]);
        EXPECT_EQ(fingerprint.x[12 + i], -across[i]);
        EXPECT_EQ(fingerprint.y[12 + i], -far);
    }
}

TEST(Fingerprints, AreNoneWithoutALength) {
    EXPECT_FALSE(fingerprintsOf(NeedlePath()));
    EXPECT_FALSE(fingerprintsOf(needlePathOf(test::designOf({jump(3, 4), stitch(3, 4)}))));
    EXPECT_TRUE(fingerprintsOf(needlePathOf(test::designOf({stitch(3, 4)}))));
}

TEST(Fingerprints, HoldWhateverTheStitches) {
    std::vector<VLMDesign> designs = test::awkwardDesigns();
    designs.push_back(test::designOf(std::vector<VLMStitch>(100'000, stitch(test::largestFloat, test::largestFloat))));
    for (const VLMDesign& design : designs)
        if (const auto fingerprints = fingerprintsOf(needlePathOf(design))) {
            EXPECT_GE(indexKeyOf(fingerprints->whole), 0);
            EXPECT_TRUE(std::isfinite(fingerprints->whole.logOfLength));
        }
}

/// The second half of the first straight stretch is 20 of a path of 4000 and 20, or a little more.
TEST(Fingerprints, HaveASecondOneWithoutALongStraightBeginning) {
    std::vector<VLMStitch> stitches(10, stitch(0, 0));
    for (std::size_t i = 0; i < stitches.size(); ++i) stitches[i] = i % 2 == 0 ? stitch(0, 400) : stitch(3, -400);
    const auto with = [&](float leadIn) {
        auto all = stitches;
        all.insert(all.begin(), stitch(leadIn, 0));
        return fingerprintsOf(needlePathOf(test::designOf(all))).value();
    };
    EXPECT_FALSE(with(20).withoutLeadIn);
    const Fingerprints fingerprints = with(21);
    ASSERT_TRUE(fingerprints.withoutLeadIn);
    Fingerprint rest = whole(test::designOf(stitches));
    rest.corners = fingerprints.whole.corners;
    rest.blocks = 1;
    EXPECT_EQ(*fingerprints.withoutLeadIn, rest);
}

std::vector<VLMStitch> withTie(const std::vector<VLMStitch>& tie) {
    std::vector<VLMStitch> all = square;
    all.insert(all.end(), tie.begin(), tie.end());
    all.push_back(jump(200, 0));
    all.insert(all.end(), square.begin(), square.end());
    return all;
}

TEST(Fingerprints, LeaveTiesOut) {
    const auto numbers = [](const std::vector<VLMStitch>& tie) {
        Fingerprint fingerprint = whole(test::designOf(withTie(tie)));
        fingerprint.points = 0;
        fingerprint.corners = 0;
        return fingerprint;
    };
    const Fingerprint untied = numbers({});
    EXPECT_EQ(numbers({stitch(0, 9), stitch(0, -9)}), untied);
    EXPECT_EQ(numbers({stitch(5, 0), stitch(-9, 0), stitch(9, 0), stitch(-5, 0)}), untied);
    EXPECT_NE(numbers({stitch(0, 11), stitch(0, -11)}), untied);
    EXPECT_EQ(numbers({stitch(9, 0), stitch(-9, 6), stitch(-7, -6), stitch(7, 0)}), untied);
    EXPECT_NE(numbers({stitch(9, 0), stitch(-9, 9), stitch(-9, -9), stitch(9, 0)}), untied);
    EXPECT_NE(numbers({stitch(0, 9), stitch(0, -8)}), untied);
}

TEST(Fingerprints, TurnWithTheDesign) {
    const test::SewnPlaces places = test::placesOf(test::designOf(withTie({})));
    const Fingerprint straight = whole(test::designThrough(places));
    const Fingerprint turned = whole(test::designThrough(test::turned(places, 90)));
    for (std::size_t i = 0; i < Fingerprint::windows; ++i) {
        EXPECT_EQ(turned.x[i], -straight.y[i]);
        EXPECT_EQ(turned.y[i], straight.x[i]);
    }
}

/// Enough corners to be known again; all windows in the middle.
Fingerprint plain() {
    return {.logOfLength = 4, .radius = 100, .points = 70'000, .corners = 300, .blocks = 2};
}

TEST(FingerprintBytes, AreTheNumbersInTheirOrder) {
    Fingerprint fingerprint = plain();
    fingerprint.x = {1, -1};
    fingerprint.y = {2, -128};
    const FingerprintBytes bytes = bytesOf(fingerprint);
    std::vector<int> numbers;
    numbers.reserve(bytes.size());
    for (const std::byte byte : bytes) numbers.push_back(std::to_integer<int>(byte));
    const std::vector<int> expected{1, 255, 0,    0,    0, 0, 0,    0,    0,    0,    0, 0, 0,  0, 0, 0,
                                    2, 128, 0,    0,    0, 0, 0,    0,    0,    0,    0, 0, 0,  0, 0, 0,
                                    0, 0,   0x80, 0x40, 0, 0, 0xC8, 0x42, 0x70, 0x11, 1, 0, 44, 1, 2, 0};
    EXPECT_EQ(numbers, expected);
    EXPECT_EQ(fingerprintOf(bytes), fingerprint);
}

TEST(FingerprintBytes, MayBeAny) {
    for (int value = 0; value < 256; ++value) {
        FingerprintBytes bytes{};
        bytes.fill(static_cast<std::byte>(value));
        const Fingerprint fingerprint = fingerprintOf(bytes);
        EXPECT_EQ(bytesOf(fingerprint), bytes) << value;
        EXPECT_GE(indexKeyOf(fingerprint), 0) << value;
        EXPECT_LE(keysNear(fingerprint).size(), 2048U) << value;
        EXPECT_FALSE(likenessOf(plain(), fingerprint).distance < 0) << value;
        static_cast<void>(candidateTurns(plain(), fingerprint));
    }
}

constexpr unsigned long everyTurn = 0b1111;

TEST(Candidates, DifferByAFewSteps) {
    Fingerprint other = plain();
    other.y[7] = 5;
    EXPECT_EQ(candidateTurns(plain(), other), QuarterTurns(everyTurn));
    other.y[7] = -6;
    EXPECT_EQ(candidateTurns(plain(), other), QuarterTurns());
}

TEST(Candidates, HaveNearlyTheSameLength) {
    Fingerprint other = plain();
    other.logOfLength = 4.079F;
    EXPECT_TRUE(candidateTurns(plain(), other).any());
    other.logOfLength = 3.919F;
    EXPECT_FALSE(candidateTurns(plain(), other).any());
    other.logOfLength = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(candidateTurns(plain(), other).any());
}

TEST(Candidates, AreNotOfAllSizes) {
    Fingerprint other = plain();
    other.radius = 279.9F;
    EXPECT_TRUE(candidateTurns(plain(), other).any());
    EXPECT_TRUE(candidateTurns(other, plain()).any());
    other.radius = 280.1F;
    EXPECT_FALSE(candidateTurns(plain(), other).any());
    EXPECT_FALSE(candidateTurns(other, plain()).any());
}

TEST(Candidates, SayEnough) {
    Fingerprint other = plain();
    other.corners = cornersOfTwins;
    EXPECT_TRUE(candidateTurns(plain(), other).any());
    other.corners = cornersOfTwins - 1;
    EXPECT_FALSE(candidateTurns(plain(), other).any());
}

TEST(Candidates, TellTheTurns) {
    Fingerprint one = plain();
    one.x[0] = 50;
    for (std::size_t turns = 0; turns < 4; ++turns) {
        Fingerprint other = plain();
        (turns % 2 == 0 ? other.x : other.y)[0] = turns < 2 ? 50 : -50;
        EXPECT_EQ(candidateTurns(one, other), QuarterTurns().set(turns));
    }
}

TEST(Candidates, AreFoundWithoutTheLeadInOfEither) {
    Fingerprint other = plain();
    other.x[0] = 50;
    EXPECT_FALSE(candidateTurns({plain(), {}}, {other, {}}).any());
    EXPECT_TRUE(candidateTurns({plain(), {}}, {other, plain()}).any());
    EXPECT_TRUE(candidateTurns({other, plain()}, {plain(), {}}).any());
    Fingerprint third = plain();
    third.x[1] = 50;
    EXPECT_TRUE(candidateTurns({other, plain()}, {third, plain()}).any());
}

/// The keys near a plain fingerprint with the numbers at the beginning.
std::vector<std::int64_t> keysWith(std::int8_t x, float logOfLength) {
    Fingerprint fingerprint = plain();
    fingerprint.x[0] = x;
    fingerprint.logOfLength = logOfLength;
    return keysNear(fingerprint);
}

std::int64_t keyWith(std::int8_t x, float logOfLength) {
    Fingerprint fingerprint = plain();
    fingerprint.x[0] = x;
    fingerprint.logOfLength = logOfLength;
    return indexKeyOf(fingerprint);
}

TEST(IndexKeys, AreThoseOfACell) {
    // The sum of four windows has cells of 64 steps around zero, the logarithm cells of 0.4 from zero on.
    EXPECT_EQ(keyWith(-32, 4.1F), keyWith(31, 4.1F));
    EXPECT_NE(keyWith(-33, 4.1F), keyWith(31, 4.1F));
    EXPECT_NE(keyWith(-32, 4.1F), keyWith(32, 4.1F));
    EXPECT_EQ(keyWith(0, 4.01F), keyWith(0, 4.39F));
    EXPECT_NE(keyWith(0, 3.99F), keyWith(0, 4.01F));
    EXPECT_NE(keyWith(0, 4.39F), keyWith(0, 4.41F));
}

TEST(IndexKeys, AreLookedUpAround) {
    using testing::Contains;
    using testing::Not;
    EXPECT_EQ(keysWith(0, 4.2F), std::vector{keyWith(0, 4.2F)});
    EXPECT_THAT(keysWith(22, 4.2F), Contains(keyWith(32, 4.2F)));
    EXPECT_THAT(keysWith(21, 4.2F), Not(Contains(keyWith(32, 4.2F))));
    EXPECT_THAT(keysWith(-23, 4.2F), Contains(keyWith(-33, 4.2F)));
    EXPECT_THAT(keysWith(-22, 4.2F), Not(Contains(keyWith(-33, 4.2F))));
    EXPECT_THAT(keysWith(0, 4.07F), Contains(keyWith(0, 3.99F)));
    EXPECT_THAT(keysWith(0, 4.09F), Not(Contains(keyWith(0, 3.99F))));
    EXPECT_THAT(keysWith(0, 4.33F), Contains(keyWith(0, 4.41F)));
    EXPECT_THAT(keysWith(0, 4.31F), Not(Contains(keyWith(0, 4.41F))));
}

TEST(IndexKeys, AreLookedUpForEveryTurn) {
    Fingerprint one = plain();
    for (std::size_t i = 0; i < Fingerprint::windows; ++i) one.x[i] = static_cast<std::int8_t>(20 * (i / 4));
    const std::vector<std::int64_t> keys = keysNear(one);
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    Fingerprint turned = plain();
    for (const int sign : {1, -1})
        for (const bool isAcross : {false, true}) {
            turned.x = {};
            turned.y = {};
            for (std::size_t i = 0; i < Fingerprint::windows; ++i)
                (isAcross ? turned.y : turned.x)[i] = static_cast<std::int8_t>(sign * one.x[i]);
            EXPECT_THAT(keys, testing::Contains(indexKeyOf(turned)));
        }
}

TEST(Likeness, IsTheDistanceInTheBestTurn) {
    Fingerprint one = plain();
    one.x[0] = 40;
    one.y[0] = 16;
    one.y[5] = -20;
    Fingerprint other = one;
    EXPECT_EQ(likenessOf(one, other).distance, 0);
    EXPECT_FALSE(likenessOf(one, other).isMirrored);
    // One number is 8 of 40 off.
    other.x[3] = 8;
    EXPECT_DOUBLE_EQ(likenessOf(one, other).distance, 0.2 / std::sqrt(32));
    for (int turn = 0; turn < 4; ++turn) {
        for (std::size_t i = 0; i < Fingerprint::windows; ++i)
            std::tie(other.x[i], other.y[i]) =
                std::make_pair(static_cast<std::int8_t>(-other.y[i]), static_cast<std::int8_t>(other.x[i]));
        EXPECT_DOUBLE_EQ(likenessOf(one, other).distance, 0.2 / std::sqrt(32));
        EXPECT_FALSE(likenessOf(one, other).isMirrored);
    }
    for (auto& y : other.y) y = static_cast<std::int8_t>(-y);
    EXPECT_DOUBLE_EQ(likenessOf(one, other).distance, 0.2 / std::sqrt(32));
    EXPECT_TRUE(likenessOf(one, other).isMirrored);
}

}  // namespace
}  // namespace velamo
