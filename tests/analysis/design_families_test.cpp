// Designs by chance, what people and programs do to them, and which of that makes other designs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

#include "samples/generated_design.h"
#include "tests/support/design_changes.h"
#include "velamo/analysis/same_path.h"

namespace velamo {
namespace {

using test::Chance;
using test::SewnPlaces;

/// What the catalogue knows of a design.
struct Known {
    NeedlePath path;
    Fingerprints fingerprints;
};

std::optional<Known> known(const VLMDesign& design) {
    NeedlePath path = needlePathOf(design);
    const auto fingerprints = fingerprintsOf(path);
    if (!fingerprints) return std::nullopt;
    return Known{std::move(path), *fingerprints};
}

std::vector<std::int64_t> keysOf(const Fingerprints& fingerprints) {
    std::vector<std::int64_t> keys{indexKeyOf(fingerprints.whole)};
    if (fingerprints.withoutLeadIn) keys.push_back(indexKeyOf(*fingerprints.withoutLeadIn));
    return keys;
}

std::vector<std::int64_t> keysNear(const Fingerprints& fingerprints) {
    std::vector<std::int64_t> keys = keysNear(fingerprints.whole);
    if (fingerprints.withoutLeadIn) {
        const auto more = keysNear(*fingerprints.withoutLeadIn);
        keys.insert(keys.end(), more.begin(), more.end());
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    }
    return keys;
}

bool isLookedUp(const Fingerprints& one, const Fingerprints& other) {
    const auto keys = keysNear(one);
    const auto own = keysOf(other);
    return std::any_of(own.begin(), own.end(),
                       [&](std::int64_t key) { return std::binary_search(keys.begin(), keys.end(), key); });
}

/// As the catalogue does it: key, fingerprint, path.
std::optional<SamePath> knownAgain(const Known& one, const Known& other) {
    if (!isLookedUp(one.fingerprints, other.fingerprints)) return std::nullopt;
    return samePathOf(one.path, other.path, candidateTurns(one.fingerprints, other.fingerprints));
}

/// The designs that a change makes of one.
using Change = std::vector<SewnPlaces> (*)(const SewnPlaces& places, Chance& chance);

struct ChangeRow {
    std::string name;
    Change change;
    double leastSame;  // per cent
    double mostSame;
    std::size_t corners = cornersOfTwins;  // designs with less do not count
    double grid = 1;
};

/// Each block with more than some stitches changed by `change`, which gets the places, and the block's begin and end.
template <class ChangeBlock>
std::vector<SewnPlaces> eachBlock(const SewnPlaces& places, ChangeBlock change) {
    constexpr std::size_t few = 5;
    std::vector<SewnPlaces> changed;
    const auto starts = test::blockStarts(places);
    for (std::size_t i = 0; starts.size() > 2 && i + 1 < starts.size(); ++i)
        if (test::stitchesIn(places, starts[i], starts[i + 1]) > few)
            changed.push_back(change(places, starts[i], starts[i + 1]));
    return changed;
}

std::vector<SewnPlaces> withBlocksMoved(const SewnPlaces& places, double way) {
    return eachBlock(places, [way](SewnPlaces moved, std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) moved[i].x += way;
        return moved;
    });
}

std::vector<SewnPlaces> only(SewnPlaces places) {
    return {std::move(places)};
}

template <int percent>
std::vector<SewnPlaces> atSize(const SewnPlaces& places, Chance&) {
    return {test::scaled(places, percent / 100.0, percent / 100.0)};
}

template <int degrees>
std::vector<SewnPlaces> atAngle(const SewnPlaces& places, Chance&) {
    return {test::turned(places, degrees)};
}

template <int percent>
std::vector<SewnPlaces> stretched(const SewnPlaces& places, Chance&) {
    return {test::scaled(places, percent / 100.0, 1)};
}

template <int hundredths>
std::vector<SewnPlaces> shaken(const SewnPlaces& places, Chance& chance) {
    return {test::shaken(places, hundredths / 10.0, chance)};
}

std::vector<SewnPlaces> withLetters(const SewnPlaces& places, Chance&) {
    return {test::withLetter(places, 2), test::withLetter(places, places.size() / 2),
            test::withLetter(places, places.size() - 1)};
}

std::vector<SewnPlaces> withoutRuns(const SewnPlaces& places, Chance& chance) {
    constexpr double visible = 12;
    std::vector<SewnPlaces> changed;
    for (std::size_t count = 6; count < 18 && count + 2 < places.size(); count += 2) {
        const std::size_t begin = 1 + chance() % (places.size() - count - 1);
        if (test::stitchesIn(places, begin, begin + count) == count &&
            test::reachOf(places, begin, begin + count) > visible)
            changed.push_back(test::without(places, begin, count));
    }
    return changed;
}

std::vector<SewnPlaces> withLastBlocksSwapped(const SewnPlaces& places, Chance&) {
    const auto starts = test::blockStarts(places);
    if (starts.size() < 4) return {};
    SewnPlaces swapped = places;
    const auto at = [&](std::size_t fromEnd) {
        return swapped.begin() + static_cast<std::ptrdiff_t>(starts[starts.size() - 1 - fromEnd]);
    };
    std::rotate(at(2), at(1), at(0));
    return {swapped};
}

const std::vector<ChangeRow> changeRows{
    {"SplitInThree", [](auto& places, auto&) { return only(test::split(places, 20, 3)); }, 99.5, 100},
    {"SplitInTwoUnrounded", [](auto& places, auto&) { return only(test::split(places, 20, 2)); }, 99.5, 100,
     cornersOfTwins, 0},
    {"WithStitchesOnTheSpot", [](auto& places, auto&) { return only(test::withStitchesOnTheSpot(places, 7)); }, 100,
     100},
    {"Tied", [](auto& places, auto&) { return only(test::tied(places)); }, 99, 100},
    {"InOneThread", [](auto& places, auto&) { return only(test::inOneThread(places)); }, 100, 100},
    {"ShakenBy10", shaken<10>, 97, 100, cornersOfTwins, 0},
    {"ShakenBy15", shaken<15>, 92, 100, cornersOfTwins, 0},
    {"ShakenBy30", shaken<30>, 0, 0.2, cornersOfTwins, 0},
    {"OnACoarseGrid", [](auto& places, auto&) { return only(places); }, 98, 100, cornersOfTwins, 10 / 6.0},
    {"TurnedByAQuarter", atAngle<90>, 100, 100, cornersOfTurnedTwins},
    {"TurnedByAHalf", atAngle<180>, 100, 100, cornersOfTurnedTwins},
    {"TurnedByThreeQuarters", atAngle<270>, 100, 100, cornersOfTurnedTwins},
    {"At50", atSize<50>, 96, 100, cornersOfSizes},
    {"At65", atSize<65>, 97, 100, cornersOfSizes},
    {"At80", atSize<80>, 99, 100, cornersOfSizes},
    {"At120", atSize<120>, 99.5, 100, cornersOfSizes},
    {"At150", atSize<150>, 99.5, 100, cornersOfSizes},
    {"At200", atSize<200>, 99.5, 100, cornersOfSizes},
    {"At200InPieces", [](auto& places, auto&) { return only(test::split(test::scaled(places, 2, 2), 60, 2)); }, 99, 100,
     cornersOfSizes},
    {"At75TurnedByAQuarter",
     [](auto& places, auto&) { return only(test::turned(test::scaled(places, 0.75, 0.75), 90)); }, 98, 100,
     cornersOfSizes},
    {"Mirrored", [](auto& places, auto&) { return only(test::scaled(places, -1, 1)); }, 0, 0},
    {"MirroredAndTurned", [](auto& places, auto&) { return only(test::turned(test::scaled(places, -1, 1), 90)); }, 0,
     0},
    {"Backwards", [](auto& places, auto&) { return only(test::backwards(places)); }, 0, 0.1},
    {"TurnedBy2Degrees", atAngle<2>, 0, 3},
    {"TurnedBy5Degrees", atAngle<5>, 0, 0.2},
    {"TurnedBy45Degrees", atAngle<45>, 0, 0},
    {"StretchedBy5", stretched<105>, 0, 6},
    {"StretchedBy10", stretched<110>, 0, 1},
    {"WithoutABlock",
     [](auto& places, auto&) {
         return eachBlock(places, [](const SewnPlaces& all, std::size_t begin, std::size_t end) {
             return test::without(all, begin, end - begin);
         });
     },
     0, 0},
    {"WithABlockMovedBy5", [](auto& places, auto&) { return withBlocksMoved(places, 5); }, 0, 1.5},
    {"WithABlockMovedBy20", [](auto& places, auto&) { return withBlocksMoved(places, 20); }, 0, 0.1},
    {"WithBlocksSwapped", withLastBlocksSwapped, 0, 0},
    {"WithALetter", withLetters, 0, 0},
    // The end of a row may hide in the rows beside it.
    {"WithoutARun", withoutRuns, 0, 0.5},
};

class ChangedDesigns : public testing::TestWithParam<ChangeRow> {};
TEST_P(ChangedDesigns, AreTheSameOrNot) {
    constexpr std::uint64_t firstSeed = 7'000'000;
    constexpr std::uint64_t seeds = 400;
    const ChangeRow& row = GetParam();
    double count = 0;
    double same = 0;
    for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
        const VLMDesign design = generatedDesign(seed);
        const auto one = known(design);
        if (!one) continue;
        Chance chance(seed);
        for (const SewnPlaces& places : row.change(test::placesOf(design), chance)) {
            const auto other = known(test::designThrough(places, row.grid));
            if (!other || std::min(one->path.corners, other->path.corners) < row.corners) continue;
            ++count;
            same += knownAgain(*one, *other).has_value();
        }
    }
    ASSERT_GT(count, 100);
    EXPECT_GE(100 * same / count, row.leastSame);
    EXPECT_LE(100 * same / count, row.mostSame);
}
INSTANTIATE_TEST_SUITE_P(Rows, ChangedDesigns, testing::ValuesIn(changeRows),
                         [](const auto& row) { return row.param.name; });

/// How far the windows of two fingerprints differ at most.
int stepsBetween(const Fingerprint& one, const Fingerprint& other) {
    int most = 0;
    for (std::size_t i = 0; i < Fingerprint::windows; ++i)
        most = std::max({most, std::abs(one.x[i] - other.x[i]), std::abs(one.y[i] - other.y[i])});
    return most;
}

/// Whether the first stitch counts as a way to where sewing begins. In pieces, only the first of them does.
bool hasLeadIn(const NeedlePath& path, const SewnPlaces& places) {
    const auto first = std::find_if(places.begin(), places.end(), [](const auto& place) { return !place.isJump; });
    const test::SewnPlace start = first == places.begin() ? test::SewnPlace{} : *(first - 1);
    return path.points.front().x != start.x || path.points.front().y != start.y;
}

TEST(FingerprintsOfDesigns, StayWhenNothingIsSewnElsewhere) {
    for (std::uint64_t seed = 8'000'000; seed < 8'000'200; ++seed) {
        const VLMDesign design = generatedDesign(seed);
        const auto one = known(design);
        if (!one) continue;
        const SewnPlaces places = test::placesOf(design);
        if (hasLeadIn(one->path, places)) continue;
        for (const SewnPlaces& same : {test::split(places, 5, 2), test::split(places, 30, 7),
                                       test::withStitchesOnTheSpot(places, 1), test::inOneThread(places)}) {
            const auto other = known(test::designThrough(same, 0));
            ASSERT_TRUE(other) << seed;
            EXPECT_LE(stepsBetween(one->fingerprints.whole, other->fingerprints.whole), 1) << seed;
            EXPECT_NEAR(one->fingerprints.whole.logOfLength, other->fingerprints.whole.logOfLength, 0.01) << seed;
        }
        const auto tied = known(test::designThrough(test::tied(places), 0));
        EXPECT_LE(stepsBetween(one->fingerprints.whole, tied->fingerprints.whole), 1) << seed;
    }
}

/// A number from the environment, which the long tests set.
std::uint64_t numberFrom(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

/// Of a hundred thousand designs that have nothing to do with each other at most one pair may be taken for one design.
TEST(UnrelatedDesigns, AreNotTheSame) {
    const std::uint64_t firstSeed = numberFrom("VELAMO_FIRST_SEED", 9'000'000);
    const std::uint64_t count = numberFrom("VELAMO_DESIGNS", 3000);
    std::vector<Fingerprints> found;
    std::vector<std::uint64_t> seeds;
    std::unordered_map<std::int64_t, std::vector<std::size_t>> cells;
    std::vector<std::string> wrong;
    std::size_t candidates = 0;
    for (std::uint64_t seed = firstSeed; seed < firstSeed + count; ++seed) {
        const auto one = known(generatedDesign(seed));
        if (!one) continue;
        std::vector<std::size_t> near;
        for (const std::int64_t key : keysNear(one->fingerprints))
            if (const auto cell = cells.find(key); cell != cells.end())
                near.insert(near.end(), cell->second.begin(), cell->second.end());
        std::sort(near.begin(), near.end());
        near.erase(std::unique(near.begin(), near.end()), near.end());
        for (const std::size_t other : near) {
            const QuarterTurns turns = candidateTurns(one->fingerprints, found[other]);
            if (turns.none()) continue;
            ++candidates;
            if (samePathOf(one->path, needlePathOf(generatedDesign(seeds[other])), turns))
                wrong.push_back(std::to_string(seed) + " " + std::to_string(seeds[other]));
        }
        for (const std::int64_t key : keysOf(one->fingerprints)) cells[key].push_back(found.size());
        found.push_back(one->fingerprints);
        seeds.push_back(seed);
    }
    EXPECT_GT(found.size(), count * 9 / 10);
    EXPECT_LE(wrong.size(), count / 100'000) << testing::PrintToString(wrong);
    RecordProperty("candidates", static_cast<int>(candidates));
}

}  // namespace
}  // namespace velamo
