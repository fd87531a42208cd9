#include "velamo/analysis/same_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/design_changes.h"
#include "tests/support/designs.h"

namespace velamo {
namespace {

using test::jump;
using test::SewnPlace;
using test::SewnPlaces;
using test::stitch;

/// An uneven zigzag with so many corners: up and down by 60 to 99, to the right by 20.
SewnPlaces zigzag(std::size_t corners) {
    SewnPlaces places{{10, -50, true}};
    for (std::size_t i = 0; i <= corners; ++i) {
        const double height = 30 + static_cast<double>(i * i * 7 % 20);
        places.push_back({30 + 20 * static_cast<double>(i), i % 2 == 0 ? height : -height});
    }
    return places;
}

constexpr std::size_t many = 150;

NeedlePath pathThrough(const SewnPlaces& places) {
    return needlePathOf(test::designThrough(places, 0));
}

std::optional<SamePath> same(const SewnPlaces& one, const SewnPlaces& other, unsigned long turns = 1) {
    const NeedlePath first = pathThrough(one);
    const NeedlePath second = pathThrough(other);
    const auto found = samePathOf(first, second, turns);
    // Whichever is asked about the other.
    EXPECT_EQ(turns == 1 && samePathOf(second, first, turns).has_value(), turns == 1 && found.has_value());
    return found;
}

SewnPlaces with(SewnPlaces places, std::size_t at, const SewnPlaces& more) {
    places.insert(places.begin() + static_cast<std::ptrdiff_t>(at), more.begin(), more.end());
    return places;
}

/// Points beside the one at the index, the first of them at `distance`, the others nearer.
SewnPlaces pointsBeside(const SewnPlaces& places, std::size_t at, std::size_t count, double distance) {
    SewnPlaces points;
    for (std::size_t i = 0; i < count; ++i)
        points.push_back({places[at].x + (i == 0 ? distance : i % 2 == 0 ? 8.0 : -8.0), places[at].y});
    return with(places, at + 1, points);
}

TEST(SamePath, IsItselfAtOnce) {
    const auto found = same(zigzag(many), zigzag(many));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, SamePathKind::twin);
    EXPECT_EQ(found->quarterTurns, 0);
    EXPECT_DOUBLE_EQ(found->scale, 1);
}

TEST(SamePath, MayLieElsewhere) {
    EXPECT_TRUE(same(zigzag(many), test::moved(zigzag(many), [](const SewnPlace& place) {
                         return DesignPoint{place.x + 5000, place.y - 3000};
                     })));
}

TEST(SamePath, IsNoneOfNothing) {
    EXPECT_FALSE(same({}, {}));
    EXPECT_FALSE(same(zigzag(many), {}));
    EXPECT_FALSE(same(zigzag(many), zigzag(many), 0));
    EXPECT_FALSE(same(zigzag(many), {{0, 0}, {5, 5}}));
}

TEST(SamePath, TellsTheTurnThatMakesTheSecondOfTheFirst) {
    for (int turns = 0; turns < 4; ++turns)
        for (const double factor : {1.0, 0.5, 2.0}) {
            const auto other = test::turned(test::scaled(zigzag(many), factor, factor), turns * 90);
            const auto found = same(zigzag(many), other, 0b1111);
            ASSERT_TRUE(found) << turns;
            EXPECT_EQ(found->quarterTurns, turns);
            EXPECT_NEAR(found->scale, factor, 1e-6);
            EXPECT_EQ(found->kind, factor == 1 ? SamePathKind::twin : SamePathKind::size);
            EXPECT_FALSE(same(zigzag(many), other, 0b1111U & ~(1UL << static_cast<unsigned>(turns)))) << turns;
        }
}

struct ScaleRow {
    std::string name;
    double factor;
    std::optional<SamePathKind> kind;
};
class Scales : public testing::TestWithParam<ScaleRow> {};
TEST_P(Scales, DecideTheKind) {
    const auto found = same(zigzag(many), test::scaled(zigzag(many), GetParam().factor, GetParam().factor));
    ASSERT_EQ(found.has_value(), GetParam().kind.has_value());
    if (!found) return;
    EXPECT_EQ(found->kind, GetParam().kind);
    EXPECT_NEAR(found->scale, GetParam().factor, 1e-6);
}
INSTANTIATE_TEST_SUITE_P(Rows, Scales,
                         testing::Values(ScaleRow{"ALittleLarger", 1.0049, SamePathKind::twin},
                                         ScaleRow{"ALittleSmaller", 1 / 1.0049, SamePathKind::twin},
                                         ScaleRow{"Larger", 1.0052, SamePathKind::size},
                                         ScaleRow{"Smaller", 1 / 1.0052, SamePathKind::size},
                                         ScaleRow{"MuchLarger", 2.79, SamePathKind::size},
                                         ScaleRow{"MuchSmaller", 1 / 2.79, SamePathKind::size},
                                         ScaleRow{"TooLarge", 2.81, std::nullopt},
                                         ScaleRow{"TooSmall", 1 / 2.81, std::nullopt}),
                         [](const auto& row) { return row.param.name; });

struct SayingRow {
    std::string name;
    std::size_t corners;
    double degrees;
    double factor;
    bool saysEnough;
};
class FewCorners : public testing::TestWithParam<SayingRow> {};
TEST_P(FewCorners, SayTooLittle) {
    const auto& row = GetParam();
    ASSERT_EQ(pathThrough(zigzag(row.corners)).corners, row.corners);
    const auto other = test::turned(test::scaled(zigzag(row.corners), row.factor, row.factor), row.degrees);
    EXPECT_EQ(same(zigzag(row.corners), other, row.degrees == 0 ? 1 : 2).has_value(), row.saysEnough);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, FewCorners,
    testing::Values(SayingRow{"OfATwin", 20, 0, 1, true}, SayingRow{"OfNoTwin", 19, 0, 1, false},
                    SayingRow{"OfATurnedTwin", 100, 90, 1, true}, SayingRow{"OfNoTurnedTwin", 99, 90, 1, false},
                    SayingRow{"OfASize", 120, 0, 1.5, true}, SayingRow{"OfNoSize", 119, 0, 1.5, false},
                    SayingRow{"OfATurnedSize", 120, 90, 1.5, true}, SayingRow{"OfNoTurnedSize", 119, 90, 1.5, false}),
    [](const auto& row) { return row.param.name; });

struct ChangeRow {
    std::string name;
    SewnPlaces places;
    bool isSame;
};
class SmallChanges : public testing::TestWithParam<ChangeRow> {};
TEST_P(SmallChanges, AreAllowedOrNot) {
    EXPECT_EQ(same(zigzag(many), GetParam().places).has_value(), GetParam().isSame);
}

/// All points to the sides by so much, in pairs: what neither a shift nor a scale can undo.
SewnPlaces swayed(double way) {
    SewnPlaces places = zigzag(many);
    for (std::size_t i = 0; i < places.size(); ++i) places[i].x += i % 4 < 2 ? way : -way;
    return places;
}

/// So much more is sewn in ties of 16 as the rule allows for each part of it.
SewnPlaces tied(double allowed) {
    const double length = pathThrough(zigzag(many)).measure.length;
    const auto ties = static_cast<std::size_t>(allowed * (length * partSkipped + lengthSkipped) / 16);
    SewnPlaces places = zigzag(many);
    for (std::size_t tie = 0; tie < ties; ++tie) {
        const SewnPlace end = places[5 + 5 * tie];
        places = with(places, 6 + 5 * tie, {{end.x + 8, end.y}, {end.x, end.y}});
    }
    return places;
}

/// Every `distance`-th line in pieces.
SewnPlaces inPieces(std::size_t distance, int pieces) {
    const SewnPlaces places = zigzag(many);
    SewnPlaces result{places[0], places[1]};
    for (std::size_t i = 2; i < places.size(); ++i) {
        for (int piece = 1; piece < pieces && i % 6 % distance == 0; ++piece) {
            const double part = static_cast<double>(piece) / pieces;
            result.push_back({places[i - 1].x + (places[i].x - places[i - 1].x) * part,
                              places[i - 1].y + (places[i].y - places[i - 1].y) * part});
        }
        result.push_back(places[i]);
    }
    return result;
}

/// The point in the middle by so much to the side.
SewnPlaces withPointMoved(double way) {
    SewnPlaces places = zigzag(many);
    places[70].x += way;
    return places;
}

SewnPlaces withHead(const SewnPlaces& head) {
    SewnPlaces places = with(zigzag(many), 0, head);
    places[0].isJump = true;
    places[head.size()].isJump = head.empty();
    return places;
}

SewnPlaces headOf(std::size_t points) {
    SewnPlaces head;
    for (std::size_t i = 0; i < points; ++i)
        head.push_back({-40 - 20 * static_cast<double>(i), i % 2 == 0 ? 0.0 : 30.0});
    return withHead(head);
}

SewnPlaces withTail(std::size_t points) {
    SewnPlaces places = zigzag(many);
    for (std::size_t i = 0; i < points; ++i) places.push_back({places.back().x + 20, i % 2 == 0 ? 20.0 : -20.0});
    return places;
}

const std::vector<ChangeRow> changes{
    {"PointsThatSwayALittle", swayed(1.9), true},
    {"PointsThatSway", swayed(2.1), false},
    {"AllLinesInPieces", inPieces(1, 4), true},
    {"FarPoints", pointsBeside(zigzag(many), 70, 4, 15), true},
    {"FarPointsTooMany", pointsBeside(zigzag(many), 70, 5, 15), false},
    {"NearPointsThatAreMore", pointsBeside(zigzag(many), 70, 5, 9), true},
    {"NearPoints", pointsBeside(zigzag(many), 70, 12, 8), true},
    {"NearPointsTooMany", pointsBeside(zigzag(many), 70, 13, 8), false},
    {"APointNotFarFromWhereItWas", withPointMoved(9.9), true},
    {"APointFarFromWhereItWas", withPointMoved(11), false},
    {"APointMissing", test::without(zigzag(many), 70, 1), true},
    {"Ties", tied(0.95), true},
    {"TiesTooMany", tied(1.1), false},
    {"AHead", headOf(4), true},
    {"AHeadTooLong", headOf(5), false},
    {"AStraightHead", withHead({{10, 450}, {10, 350}, {10, 250}, {10, 150}, {10, 50}, {10, 0}}), true},
    {"ATail", withTail(2), true},
    {"ATailTooLong", withTail(3), false},
    {"Mirrored", test::scaled(zigzag(many), -1, 1), false},
    {"MirroredTheOtherWay", test::scaled(zigzag(many), 1, -1), false},
    {"Backwards", test::backwards(zigzag(many)), false},
    {"ALineMissing", test::without(zigzag(many), 60, 6), false},
};
INSTANTIATE_TEST_SUITE_P(Rows, SmallChanges, testing::ValuesIn(changes),
                         [](const auto& row) { return row.param.name; });

TEST(SamePath, AllowsForTwoHeads) {
    EXPECT_TRUE(same(headOf(2), withHead({{-50, 90}, {-60, -70}})));
    EXPECT_FALSE(same(headOf(3), withHead({{-50, 90}, {-60, -70}, {-50, 70}})));
}

TEST(SamePath, AllowsForOneTailOnly) {
    SewnPlaces other = zigzag(many);
    other.push_back({other.back().x - 30, 90});
    EXPECT_FALSE(same(withTail(1), other));
}

TEST(SamePath, AllowsForALongerTailWhereAFileLosesIt) {
    const NeedlePath whole = pathThrough(withTail(4));
    NeedlePath part = pathThrough(zigzag(many));
    EXPECT_FALSE(samePathOf(whole, part, 1));
    part.lostPoints = 4;
    EXPECT_TRUE(samePathOf(whole, part, 1));
    EXPECT_TRUE(samePathOf(part, whole, 1));
    part.lostPoints = 3;
    EXPECT_FALSE(samePathOf(whole, part, 1));
    NeedlePath other = whole;
    other.lostPoints = 4;
    EXPECT_FALSE(samePathOf(other, pathThrough(zigzag(many)), 1));
}

TEST(SamePath, AllowsForMoreTiesWhereThereAreConnections) {
    const auto withJumps = [](SewnPlaces places) {
        for (std::size_t i = 20; i < places.size(); i += 20) places[i].isJump = true;
        return places;
    };
    const NeedlePath path = pathThrough(withJumps(zigzag(many)));
    EXPECT_EQ(path.connections, 7U);
    EXPECT_TRUE(samePathOf(path, pathThrough(withJumps(tied(1.1))), 1));
}

TEST(SamePath, HasPointsInCommon) {
    // Every second line in pieces: a third of the points of one path, and half of the other's.
    EXPECT_TRUE(same(inPieces(2, 2), inPieces(2, 3)));
    EXPECT_TRUE(same(inPieces(1, 2), inPieces(1, 4)));
    EXPECT_FALSE(same(inPieces(1, 2), inPieces(1, 3)));
}

/// Rings of the same size in stitches of two lengths.
TEST(SamePath, IsNotThatOfAnyRing) {
    const auto ring = [](int points) {
        SewnPlaces places;
        for (int i = 0; i <= 3 * points; ++i) {
            const double angle = 2 * std::numbers::pi * i / points;
            places.push_back({1000 * std::cos(angle), 1000 * std::sin(angle), i == 0});
        }
        return places;
    };
    EXPECT_TRUE(same(ring(240), ring(240)));
    EXPECT_FALSE(same(ring(240), ring(241)));
    EXPECT_FALSE(same(ring(240), ring(300)));
}

TEST(SamePath, TakesTimeInProportionWhateverTheStitches) {
    constexpr std::size_t million = 1'000'000;
    std::vector<std::vector<VLMStitch>> lists(5);
    for (std::size_t i = 0; i < million; ++i) {
        const float side = i % 2 == 0 ? 30.0F : -30.0F;
        lists[0].push_back(stitch(0.7F, side));
        lists[1].push_back(stitch(i % 3 == 0 ? 2 : 0, 2 * side));
        lists[2].push_back(i % 2 == 0 ? jump(3, side) : stitch(0, side));
        lists[3].push_back(i % 5 == 0 ? test::change(3, side) : stitch(4, side));
        lists[4].push_back(stitch(side, i % 7 == 0 ? 11 : 0));
    }
    std::vector<NeedlePath> paths;
    paths.reserve(lists.size());
    for (auto& list : lists) paths.push_back(pathThrough(test::placesOf(test::designOf(std::move(list)))));
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_TRUE(samePathOf(paths[i], paths[i], 0b1111));
        EXPECT_FALSE(samePathOf(paths[i], paths[(i + 1) % paths.size()], 0b1111)) << i;
    }
}

}  // namespace
}  // namespace velamo
