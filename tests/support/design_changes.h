#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "tests/support/stitches.h"

namespace velamo::test {

/// Where a move of the needle ends, in tenths of a millimetre.
struct SewnPlace {
    double x = 0;
    double y = 0;
    bool isJump = false;
    bool isChange = false;
};
using SewnPlaces = std::vector<SewnPlace>;

inline SewnPlaces placesOf(const VLMDesign& design) {
    SewnPlaces places;
    SewnPlace place;
    for (const VLMStitch& one : design.stitches()) {
        place = {place.x + one.deltaX(), place.y + one.deltaY(), one.isJumpStitch(), one.isColorChange()};
        places.push_back(place);
    }
    return places;
}

/// A design that goes from place to place, each of them rounded to a whole multiple of `grid`; zero rounds nothing.
inline VLMDesign designThrough(const SewnPlaces& places, double grid = 1) {
    const auto rounded = [grid](double value) { return grid == 0 ? value : std::round(value / grid) * grid; };
    std::vector<VLMStitch> stitches;
    stitches.reserve(places.size());
    double x = 0;
    double y = 0;
    for (const SewnPlace& place : places) {
        const double nextX = rounded(place.x);
        const double nextY = rounded(place.y);
        stitches.emplace_back(static_cast<float>(nextX - x), static_cast<float>(nextY - y), place.isJump,
                              place.isChange);
        x = nextX;
        y = nextY;
    }
    VLMDesign design;
    design.setStitches(std::move(stitches));
    return design;
}

using Chance = std::mt19937_64;  // the standard says what it gives; what distributions make of that differs

inline double within(Chance& chance, double least, double most) {
    return least + (most - least) * static_cast<double>(chance() >> 11U) / 9007199254740992;
}

inline SewnPlaces moved(SewnPlaces places, const std::function<DesignPoint(const SewnPlace&)>& where) {
    for (SewnPlace& place : places) {
        const DesignPoint point = where(place);
        place.x = point.x;
        place.y = point.y;
    }
    return places;
}

inline SewnPlaces scaled(const SewnPlaces& places, double factorX, double factorY) {
    return moved(places, [=](auto& place) { return DesignPoint{place.x * factorX, place.y * factorY}; });
}

inline SewnPlaces turned(const SewnPlaces& places, double degrees) {
    const double angle = degrees * std::numbers::pi / 180;
    return moved(places, [cosine = std::cos(angle), sine = std::sin(angle)](auto& place) {
        return DesignPoint{place.x * cosine - place.y * sine, place.x * sine + place.y * cosine};
    });
}

inline SewnPlaces shaken(const SewnPlaces& places, double most, Chance& chance) {
    return moved(places, [&, most](auto& place) {
        const double x = place.x + within(chance, -most, most);
        return DesignPoint{x, place.y + within(chance, -most, most)};
    });
}

/// All moves longer than `length` in pieces of equal length.
inline SewnPlaces split(const SewnPlaces& places, double length, int pieces) {
    SewnPlaces result;
    SewnPlace last;
    for (const SewnPlace& place : places) {
        if (std::hypot(place.x - last.x, place.y - last.y) > length && !place.isChange)
            for (int piece = 1; piece < pieces; ++piece)
                result.push_back({last.x + (place.x - last.x) * piece / pieces,
                                  last.y + (place.y - last.y) * piece / pieces, place.isJump, false});
        result.push_back(place);
        last = place;
    }
    return result;
}

/// Stitches on the spot, one for each `distance` moves.
inline SewnPlaces withStitchesOnTheSpot(const SewnPlaces& places, std::size_t distance) {
    SewnPlaces result;
    for (std::size_t i = 0; i < places.size(); ++i) {
        result.push_back(places[i]);
        if (i % distance == 0) result.push_back({places[i].x, places[i].y});
    }
    return result;
}

/// Three small stitches before each jump that follows a stitch.
inline SewnPlaces tied(const SewnPlaces& places) {
    constexpr double tie = 4;
    SewnPlaces result;
    for (const SewnPlace& place : places) {
        if (place.isJump && !result.empty() && !result.back().isJump && !result.back().isChange) {
            const SewnPlace end = result.back();
            result.push_back({end.x + tie, end.y});
            result.push_back({end.x - tie, end.y});
            result.push_back({end.x, end.y});
        }
        result.push_back(place);
    }
    return result;
}

inline SewnPlaces inOneThread(const SewnPlaces& places) {
    SewnPlaces result;
    for (SewnPlace place : places) {
        if (place.isChange) place = {place.x, place.y, true, false};
        result.push_back(place);
    }
    return result;
}

/// Another order of the same places.
inline SewnPlaces backwards(SewnPlaces places) {
    std::reverse(places.begin(), places.end());
    return places;
}

inline SewnPlaces without(SewnPlaces places, std::size_t first, std::size_t count) {
    const auto begin = places.begin() + static_cast<std::ptrdiff_t>(first);
    places.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
    return places;
}

/// The letter M, 3 mm wide, in 12 stitches, where the needle is after the move.
inline SewnPlaces withLetter(SewnPlaces places, std::size_t after) {
    static const std::vector<DesignPoint> letter{{0, 10},  {0, 20},  {0, 30},  {7, 22}, {15, 15}, {22, 22},
                                                 {30, 30}, {30, 20}, {30, 10}, {30, 0}, {15, 0},  {0, 0}};
    const SewnPlace start = places[after];
    SewnPlaces stitches{{start.x, start.y, true, false}};
    for (const DesignPoint& point : letter) stitches.push_back({start.x + point.x, start.y + point.y});
    stitches.push_back({start.x, start.y, true, false});
    places.insert(places.begin() + static_cast<std::ptrdiff_t>(after) + 1, stitches.begin(), stitches.end());
    return places;
}

/// Where blocks begin, and the end of all.
inline std::vector<std::size_t> blockStarts(const SewnPlaces& places) {
    std::vector<std::size_t> starts{0};
    for (std::size_t i = 1; i < places.size(); ++i)
        if (places[i].isChange) starts.push_back(i);
    starts.push_back(places.size());
    return starts;
}

/// How many of the places are those of stitches.
inline std::size_t stitchesIn(const SewnPlaces& places, std::size_t begin, std::size_t end) {
    std::size_t count = 0;
    for (std::size_t i = begin; i < end; ++i) count += !places[i].isJump && !places[i].isChange;
    return count;
}

/// How far the places lie at most from the line between those around them.
inline double reachOf(const SewnPlaces& places, std::size_t begin, std::size_t end) {
    const SewnPlace& from = places[begin - 1];
    const double x = places[end].x - from.x;
    const double y = places[end].y - from.y;
    const double square = x * x + y * y;
    double reach = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const double wayX = places[i].x - from.x;
        const double wayY = places[i].y - from.y;
        const double part = square > 0 ? std::clamp((wayX * x + wayY * y) / square, 0.0, 1.0) : 0;
        reach = std::max(reach, std::hypot(wayX - part * x, wayY - part * y));
    }
    return reach;
}

}  // namespace velamo::test
